/* The header alone, as C, and a call through it. */
#include "velox/pop_connect.h"

int PopConnectedFromC(void);

int PopConnectedFromC(void) {
    return AMPBSConnect();
}
