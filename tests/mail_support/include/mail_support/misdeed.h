// What a scripted server does wrong, and when.
#ifndef MAIL_SUPPORT_MISDEED_H
#define MAIL_SUPPORT_MISDEED_H

#include <map>
#include <string>

#include "mail_support/channel.h"

namespace mail_support {

enum class Then {
    kGoOn,    // with the dialogue
    kStall,   // says nothing more
    kClose,   // ends the connection
    kRepeat,  // says it again and again
    kDrip,    // says it again and again, a byte every tenth of a second
};

// Instead of the right answer.
struct Misdeed {
    std::string text;
    Then then = Then::kGoOn;
};

// By the stage of the dialogue.
using Misdeeds = std::map<std::string, Misdeed>;

// Answers at a stage: with the right answer, or with the misdeed planned there. False when the
// dialogue is over.
bool Answer(Channel &channel, const Misdeeds &misdeeds, const std::string &stage,
            const std::string &right_answer);

// At a stage where an honest server says nothing. False when the dialogue is over.
bool Pass(Channel &channel, const Misdeeds &misdeeds, const std::string &stage);

}  // namespace mail_support

#endif  // MAIL_SUPPORT_MISDEED_H
