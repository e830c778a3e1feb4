// The transports that callers hold handles of.
#ifndef AMRPOP_TRANSPORTS_H
#define AMRPOP_TRANSPORTS_H

#include <map>
#include <memory>
#include <mutex>

#include <records/mail_modules.h>

#include "login.h"

namespace amrpop {

// Handles are numbers that are never given again, so that one that is wrong or outlived is noticed.
// The lock guards the map only; a transport in use is kept alive by its user.
class Transports {
  public:
    HTRANSPORT Add(std::shared_ptr<LogIn> log_in);
    std::shared_ptr<LogIn> Find(HTRANSPORT handle);
    bool Remove(HTRANSPORT handle);

  private:
    std::mutex mutex_;
    std::map<HTRANSPORT, std::shared_ptr<LogIn>> log_ins_;
    HTRANSPORT last_ = 0;
};

}  // namespace amrpop

#endif  // AMRPOP_TRANSPORTS_H
