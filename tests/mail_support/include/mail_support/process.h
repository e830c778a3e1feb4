// Other programs, run and waited for.
#ifndef MAIL_SUPPORT_PROCESS_H
#define MAIL_SUPPORT_PROCESS_H

#include <string>
#include <vector>

#include <sys/types.h>

namespace mail_support {

struct Finished {
    int status = -1;     // exit status; -1 when it did not exit by itself
    std::string output;  // standard output and error together
};

// Runs a command (found on PATH) to its end, with a text on its standard input.
Finished Run(const std::vector<std::string> &command, const std::string &input = "");

// A program in the background, ended with the object.
class BackgroundProcess {
  public:
    // Its output goes to log_file.
    BackgroundProcess(const std::vector<std::string> &command, const std::string &log_file);
    BackgroundProcess(const BackgroundProcess &) = delete;
    BackgroundProcess &operator=(const BackgroundProcess &) = delete;
    ~BackgroundProcess();

    bool IsRunning();
    pid_t Id() const { return id_; }

  private:
    pid_t id_ = -1;
};

// Whether a program is there: an absolute path, or a name on PATH.
bool ProgramExists(const std::string &program);

}  // namespace mail_support

#endif  // MAIL_SUPPORT_PROCESS_H
