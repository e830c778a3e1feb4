/* The header alone, as C, and a call through it. */
#include "velox/report_method.h"

LONG ResetOpenSetFromC(void);

LONG ResetOpenSetFromC(void) {
    return AMResetOpenSet();
}
