#include "mail_support/sending.h"

#include <array>

#include "mail_support/module.h"

namespace mail_support {

DWORD RightSize(const Sending &sending) {
    std::size_t size = sending.subject.size() + sending.body.size();
    for (const std::string &address : sending.to)
        size += address.size() + 2;
    return static_cast<DWORD>(size);
}

Sent Send(const Sending &sending) {
    std::vector<const char *> to;
    to.reserve(sending.to.size());
    for (const std::string &address : sending.to)
        to.push_back(address.c_str());
    const DWORD size = sending.size.value_or(RightSize(sending));
    std::array<char, MAIL_ANSWER_CAPACITY> answer{};
    answer.fill('~');
    Sent sent;
    const Module module(AMRSMTP_MODULE);
    const auto start = std::chrono::steady_clock::now();
    if (sending.message_id)
        sent.result = module.Get<KESSENDMAILWITHID>(KESSENDMAILWITHID_NAME)(
            sending.server.c_str(), sending.sender.c_str(), sending.port,
            sending.error_reply.c_str(), sending.error_reply.c_str(), sending.option, sending.form,
            to.data(), static_cast<DWORD>(to.size()), sending.subject.c_str(), sending.body.data(),
            size, answer.data(), &sent.status, sending.message_id->c_str());
    else
        sent.result = module.Get<SENDMAILWITHSMTP>(SENDMAILWITHSMTP_NAME)(
            sending.server.c_str(), sending.sender.c_str(), sending.port,
            sending.error_reply.c_str(), sending.error_reply.c_str(), sending.option, sending.form,
            to.data(), static_cast<DWORD>(to.size()), sending.subject.c_str(), sending.body.data(),
            size, answer.data(), &sent.status);
    sent.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    sent.answer = answer.data();
    return sent;
}

}  // namespace mail_support
