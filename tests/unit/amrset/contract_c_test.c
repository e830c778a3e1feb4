/* The header alone, as C, and a call through it. */
#include "velox/contract.h"

void ItocFromC(int number, char *buffer);

void ItocFromC(int number, char *buffer) {
    itoc(number, buffer);
}
