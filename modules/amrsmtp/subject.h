// The subject's way from the registry's encoding to UTF-8.
#ifndef AMRSMTP_SUBJECT_H
#define AMRSMTP_SUBJECT_H

#include <string>

namespace amrsmtp {

// Converts from EUC-JP, as all stored texts are. Throws BadArgument for control bytes and for what
// is no such text.
std::string ReadSubject(const char *text);

}  // namespace amrsmtp

#endif  // AMRSMTP_SUBJECT_H
