// A call of amrsmtp.dll, with arguments that are right unless a test changes them.
#ifndef MAIL_SUPPORT_SENDING_H
#define MAIL_SUPPORT_SENDING_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <records/mail_modules.h>

namespace mail_support {

struct Sending {
    std::string server = "127.0.0.1";
    std::string sender = "agent@server.example";
    DWORD port = 0;
    std::string error_reply = {};
    DWORD option = MAIL_OPTION_PLAIN;
    DWORD form = MAIL_BODY_ENCODED;
    std::vector<std::string> to = {"centre@maintenance.example"};
    std::string subject = "Report";
    std::string body = "begin 644 body\n#86)C\n`\nend\n";
    std::optional<DWORD> size = {};              // instead of the right one
    std::optional<std::string> message_id = {};  // given: KesSendMailWithId
};

struct Sent {
    DWORD status = 99;
    DWORD result = 99;
    std::string answer;
    std::chrono::milliseconds elapsed{};
};

// The size argument that goes with a sending.
DWORD RightSize(const Sending &sending);

// Loads the module, sends and unloads it.
Sent Send(const Sending &sending);

// What a call may take.
inline std::chrono::milliseconds LongestCall(std::chrono::seconds deadline) {
    return deadline + std::chrono::seconds(1);
}

// Calls, and up to twice again while the call took longer than it may: a busy machine stretches one
// call, not each of three.
template <typename Call>
auto InTime(std::chrono::seconds deadline, Call call) {
    auto result = call();
    for (int again = 0; again < 2 && result.elapsed >= LongestCall(deadline); ++again) {
        result = call();
    }
    return result;
}

}  // namespace mail_support

#endif  // MAIL_SUPPORT_SENDING_H
