#include "mail_support/misdeed.h"

namespace mail_support {

namespace {

void Drip(Channel &channel, const std::string &text) {
    for (;;)
        for (const char byte : text)
            if (!channel.Write({&byte, 1}) || !channel.Pause(100))
                return;
}

bool Misbehave(Channel &channel, const Misdeed &misdeed) {
    if (misdeed.then == Then::kDrip) {
        Drip(channel, misdeed.text);
        return false;
    }
    bool written = channel.Write(misdeed.text);
    while (written && misdeed.then == Then::kRepeat)
        written = channel.Write(misdeed.text);
    if (written && misdeed.then == Then::kStall)
        channel.Stall();
    return written && misdeed.then == Then::kGoOn;
}

}  // namespace

bool Answer(Channel &channel, const Misdeeds &misdeeds, const std::string &stage,
            const std::string &right_answer) {
    const auto planned = misdeeds.find(stage);
    if (planned == misdeeds.end())
        return channel.Write(right_answer);
    return Misbehave(channel, planned->second);
}

bool Pass(Channel &channel, const Misdeeds &misdeeds, const std::string &stage) {
    const auto planned = misdeeds.find(stage);
    return planned == misdeeds.end() || Misbehave(channel, planned->second);
}

}  // namespace mail_support
