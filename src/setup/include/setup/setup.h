// The work of vlxfd's main, which a test can call.
#ifndef SETUP_SETUP_H
#define SETUP_SETUP_H

// Starts the trace log, checks the registry server and runs the import driver. Gives the exit
// status: that of GetOpenMsgfromFD (keyfd/keyfd.h), or 0 when the registry server is not running.
int RunSetup() noexcept;

#endif  // SETUP_SETUP_H
