/*
 * The test report through the alert queue.
 *
 * Conventions
 *  1. The queue is kept by the module amvmque.dll; it outlives the caller and the machine's
 * restart.
 *  2. Thread safety: may be called from any thread; nothing is kept between calls.
 */
#ifndef VELOX_QUEUE_REPORT_H
#define VELOX_QUEUE_REPORT_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Puts one test alert, "TEST - AlertManager", for the Velox report destination into the alert
 * queue, so that it goes out by whatever method is configured. TRUE (1) when the queue accepted it;
 * delivery is not awaited. FALSE (0) without that destination, without the module, when the
 * computer's name has more than 256 bytes, and when the queue refuses the item; the trace says
 * which.
 */
NTWIN32_API BOOL TestFatalReport(void) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
