// The fake platform: every call that src/ makes of libNTwin32, libtracelog, libamcrtcpy and
// libamcregac, under the same C names, in memory and under the test's control.
//
// Conventions
//  1. State is global and belongs to one test at a time; Reset() brings it back to an empty
//  registry,
//     an English system, no modules and no faults. The fixture PlatformTest does so around each
//     test and fails a test that leaves something open.
//  2. Every call is logged with its function name and its main arguments, in order.
//  3. A call fails when a fault planned for it is due. A planned fault that never came is a failure
//  of
//     the test (UnusedFaults), so that a test cannot pass without its fault.
//  4. Texts are bytes, as the code under test sees them.
#ifndef FAKES_PLATFORM_H
#define FAKES_PLATFORM_H

#include <gtest/gtest.h>
#include <ntwin32/types.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace fakes {

void Reset();

// ---- Trace --------------------------------------------------------------------------------------

struct TraceRecord {
    int level = 0;
    std::string source;
    std::string function;
    int line = 0;
    std::string format;  // as the code gives it
    std::string text;    // formatted
};

const std::vector<TraceRecord> &Trace();
void ClearTrace();

// The records as "level text" lines, in order; those at or above a level; those of one function.
std::vector<std::string> TraceLines(int lowest_level = 0);
std::vector<std::string> TraceLinesOf(std::string_view function);
// True when a record of exactly this level and text was written.
bool HasTrace(int level, std::string_view text);

// ---- Calls and faults ---------------------------------------------------------------------------

struct Call {
    std::string function;
    std::string detail;  // main arguments, for example "SOFTWARE\XEV sam=0x20019"
};

const std::vector<Call> &Calls();
int CallCount(std::string_view function);

// Makes the nth call from now on (counted from 1) of the function fail. `error` is what a function
// with an error code gives; functions with a BOOL, pointer or handle give their failure value.
void FailCall(std::string_view function, int nth = 1, LONG error = 1016);
// Makes every call of the function from now on fail.
void FailEveryCall(std::string_view function, LONG error = 1016);
// Makes the nth platform call from now on fail, whatever it is. For sweeps: run once, read the
// number of Calls(), then run again with each number in turn.
void FailAnyCall(int nth);
// Planned faults that have not come yet.
int UnusedFaults();

// For the fakes themselves: logs the call and tells whether it is to fail (error code, else 0).
LONG Enter(std::string_view function, std::string detail = {});

// ---- System -------------------------------------------------------------------------------------

struct System {
    LANGID language_id = 1033;
    std::string language_name = "en_US";
    std::string computer_name = "HOST01";
    std::string distribution = "Debian GNU/Linux 12 (bookworm)";
    std::string kes_directory = "/opt/xev/kestro_sa";  // what %KesDir% becomes
    std::string root_path = "/opt/xev/kestro_sa";
    int server_ready = 0;  // what CheckNTserverReady gives
};
System &TheSystem();

// ---- Files --------------------------------------------------------------------------------------

// Files that CreateFile opens.
void AddFile(const std::string &path, std::string bytes);
// Lets each ReadFile give at most `size` bytes, as a slow medium may.
void LimitReads(DWORD size);
// Files that UUCdDeCodingFromFile decodes, by path: what comes out. Others fail.
void AddEncodedFile(const std::string &path, std::string decoded);
// The fake codec's form, which UUCdDeCodingFromMemory takes and UUCdEnCodingToMemory makes.
std::string FakeEncode(std::string_view decoded);
// The fake password form, which Ras_Decode takes and Ras_Encode makes.
std::string FakePassword(std::string_view password);

// ---- Modules ------------------------------------------------------------------------------------

// Lets LoadLibrary(path) succeed with these functions.
void AddModule(const std::string &path, std::map<std::string, void (*)()> functions);

// ---- What is still open -------------------------------------------------------------------------

int OpenFiles();
int OpenEvents();
int LoadedModules();
int GlobalBlocks();

// Empties the platform before a test and checks after it that all was closed and every fault came.
class PlatformTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Calls on closed handles that the test expects, and handles that it expects to stay open.
    int expected_closed_handle_calls_ = 0;
    int expected_open_keys_ = 0;
};

}  // namespace fakes

#endif  // FAKES_PLATFORM_H
