// The key of the watched sources, for the table's settings and for its items.
#ifndef AMRSET_SYSLOGKEYS_H
#define AMRSET_SYSLOGKEYS_H

#define KEY_SYSLOG_SOURCES "SOFTWARE\\XEV\\KESALERTMAN\\REPORTTABLE\\EVENTLOG\\APPLICATION"

#endif  // AMRSET_SYSLOGKEYS_H
