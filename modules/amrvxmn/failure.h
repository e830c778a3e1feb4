// Why a report was not handed over.
#ifndef AMRVXMN_FAILURE_H
#define AMRVXMN_FAILURE_H

#include <records/manager.h>

#include <stdexcept>
#include <string>

namespace amrvxmn {

// The module's results.
enum class Result {
    kAccepted = VLX_MANAGER_ACCEPTED,
    kNotPrepared = VLX_MANAGER_NOT_PREPARED,
    kNotDelivered = VLX_MANAGER_NOT_DELIVERED,
    kRefused = VLX_MANAGER_REFUSED,
};

class Failure : public std::runtime_error {
  public:
    Failure(Result result, const std::string &reason)
        : std::runtime_error(reason), result_(result) {}
    Result Kind() const noexcept { return result_; }

  private:
    Result result_;
};

}  // namespace amrvxmn

#endif  // AMRVXMN_FAILURE_H
