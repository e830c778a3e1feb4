// Name look-ups of the whole process, libcurl's included, answered by the test. A program that uses
// this links mail_resolver, which puts its own getaddrinfo before the system's.
#ifndef MAIL_SUPPORT_RESOLVER_H
#define MAIL_SUPPORT_RESOLVER_H

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace mail_support {

// While it lives it answers every look-up of a name; addresses still go to the system. One at a
// time.
class Resolver {
  public:
    Resolver();
    Resolver(const Resolver &) = delete;
    Resolver &operator=(const Resolver &) = delete;
    // Ends the look-ups that stall and waits for them.
    ~Resolver();

    // The addresses of a name; other names do not exist.
    void Know(const std::string &name, const std::vector<std::string> &addresses);
    // Looking up this name takes until the resolver goes.
    void StallAt(const std::string &name);

    // Called in place of the system's look-up: the addresses of a name, none when it does not
    // exist.
    std::vector<std::string> LookUp(const std::string &name);

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, std::vector<std::string>> addresses_;
    std::string stalling_name_;
    bool ending_ = false;
    int running_ = 0;
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_RESOLVER_H
