#include "setup/setup.h"

int main() {
    return RunSetup();
}
