// amrvxmn.dll: the module that hands reports to the management server. Here is its C boundary;
// nothing is kept between calls.
#include <exception>
#include <new>
#include <string>
#include <type_traits>

#include <records/manager.h>
#include <session/answer.h>
#include <session/connection.h>
#include <session/deadline.h>
#include <tracelog.h>

#include "delivery.h"
#include "event.h"
#include "failure.h"
#include "manager.h"

namespace amrvxmn {

namespace {

constexpr char kSource[] = "amrvxmn";
constexpr int kNote = 0;
constexpr int kFailure = 1;

int Fail(Result result, const char *reason, const char *function, VLX_ALERT_DATA *alert) noexcept {
    TraceLog(kFailure, kSource, function, __LINE__, "not handed over, result %d: %s",
             static_cast<int>(result), reason);
    if (alert != nullptr && alert->lpszErrorMessage != nullptr)
        session::GiveAnswer(reason, alert->lpszErrorMessage, VLX_ALERT_ERROR_CAPACITY);
    return static_cast<int>(result);
}

// make gives the event that the manager is to have.
template <typename Make>
void HandOver(const VLX_MANAGER_PARAM *parameters, const char *function, Make make) {
    if (parameters == nullptr)
        throw Failure(Result::kNotPrepared, "there are no manager parameters");
    const session::Deadline deadline(session::Allowance("KES_MANAGER_DEADLINE"));
    const session::Endpoint manager = ReadManager(*parameters);
    const Event event = make();
    Deliver(manager, event, deadline, function);
    TraceLog(kNote, kSource, function, __LINE__, "handed over, id %s", event.id.c_str());
}

template <typename Make>
int TryToHandOver(VLX_ALERT_DATA *alert, const VLX_MANAGER_PARAM *parameters, const char *function,
                  Make make) noexcept {
    try {
        HandOver(parameters, function, make);
        return static_cast<int>(Result::kAccepted);
    } catch (const Failure &failure) {
        return Fail(failure.Kind(), failure.what(), function, alert);
    } catch (const std::bad_alloc &) {
        return Fail(Result::kNotPrepared, "no memory", function, alert);
    } catch (const std::exception &error) {
        return Fail(Result::kNotPrepared, error.what(), function, alert);
    }
}

}  // namespace

}  // namespace amrvxmn

extern "C" {

NTWIN32_API int AMVlxManReport_Open(VLX_ALERT_DATA *lpAlertData,
                                    VLX_MANAGER_PARAM *lpManagerParam) noexcept {
    return amrvxmn::TryToHandOver(lpAlertData, lpManagerParam, "AMVlxManReport_Open",
                                  amrvxmn::MakeOpeningEvent);
}

NTWIN32_API int KesManReport_Alert(VLX_ALERT_DATA *lpAlertData, VLX_MANAGER_PARAM *lpManagerParam,
                                   const VLX_MANAGER_ALERT *lpAlert) noexcept {
    return amrvxmn::TryToHandOver(lpAlertData, lpManagerParam, "KesManReport_Alert", [lpAlert] {
        if (lpAlert == nullptr)
            throw amrvxmn::Failure(amrvxmn::Result::kNotPrepared, "there is no alert");
        return amrvxmn::MakeAlertEvent(*lpAlert);
    });
}

}  // extern "C"

static_assert(std::is_same_v<decltype(AMVlxManReport_Open), AMVLXMANREPORT_OPEN>);
static_assert(std::is_same_v<decltype(KesManReport_Alert), KESMANREPORT_ALERT>);
