// libcurl 7.88, where it is not what one expects:
//  - The cleanup of a handle waits for a name look-up that still runs, unless QUICK_EXIT is set.
//  - The goodbye (QUIT and its answer) knows no deadline but SERVER_RESPONSE_TIMEOUT, which before
//    the goodbye would bound every answer; so it is set when QUIT goes out. FORBID_REUSE makes the
//    goodbye part of the transfer, under this handle's options.
//  - Its sockets lack FD_CLOEXEC.
#include "session/connection.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

#include <fcntl.h>

#include "session/host.h"

namespace session {

namespace {

constexpr long kGoodbyeSeconds = 1;
// What libcurl needs to end a connection, goodbye aside; kept back from the transfer.
constexpr milliseconds kEnding(100);
// Beyond any deadline: only TIMEOUT_MS bounds an answer.
constexpr long kNoOwnLimit = 3600;

void InitialiseLibrary() {
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
        throw SetupError("libcurl cannot be initialised");
}

CURL *NewHandle() {
    InitialiseLibrary();
    CURL *handle = curl_easy_init();
    if (handle == nullptr)
        throw std::bad_alloc();
    return handle;
}

int CloseOnExec(void *, curl_socket_t socket, curlsocktype) {
    ::fcntl(socket, F_SETFD, FD_CLOEXEC);
    return CURL_SOCKOPT_OK;
}

std::string InUrl(const std::string &host) {
    return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

bool IsCertificateFault(CURLcode result) {
    return result == CURLE_PEER_FAILED_VERIFICATION || result == CURLE_SSL_CACERT_BADFILE;
}

// The server's words say more than libcurl's.
bool IsRefusal(CURLcode result) {
    return result == CURLE_SEND_ERROR || result == CURLE_WEIRD_SERVER_REPLY ||
           result == CURLE_REMOTE_ACCESS_DENIED || result == CURLE_LOGIN_DENIED;
}

// A duration that libcurl measured; 0 when that step was not finished.
curl_off_t Finished(CURL *handle, CURLINFO info) {
    curl_off_t microseconds = 0;
    curl_easy_getinfo(handle, info, &microseconds);
    return microseconds;
}

// With TLS from the first byte, CONNECT_TIME counts the handshake too.
bool HasSocket(CURL *handle) {
    long port = 0;
    curl_easy_getinfo(handle, CURLINFO_LOCAL_PORT, &port);
    return port > 0;
}

}  // namespace

Connection::Connection(Endpoint endpoint, Conversation &conversation)
    : endpoint_(std::move(endpoint)), conversation_(conversation), handle_(NewHandle()) {
    SetCommonOptions();
    SetAddress();
    SetProtection();
    SetVerification(endpoint_.verify);
}

void Connection::Check(CURLcode result) {
    if (result == CURLE_OUT_OF_MEMORY)
        throw std::bad_alloc();
    if (result != CURLE_OK)
        throw SetupError(curl_easy_strerror(result));
}

void Connection::SetCommonOptions() {
    Set(CURLOPT_NOSIGNAL, 1L);
    Set(CURLOPT_QUICK_EXIT, 1L);
    Set(CURLOPT_PROXY, "");
    Set(CURLOPT_NETRC, static_cast<long>(CURL_NETRC_IGNORED));
    const std::string protocols = endpoint_.protocol + "," + endpoint_.protocol + "s";
    Set(CURLOPT_PROTOCOLS_STR, protocols.c_str());
    Set(CURLOPT_SOCKOPTFUNCTION, &CloseOnExec);
    Set(CURLOPT_ERRORBUFFER, error_.data());
    Set(CURLOPT_VERBOSE, 1L);
    Set(CURLOPT_DEBUGFUNCTION, &Connection::OnDebug);
    Set(CURLOPT_DEBUGDATA, static_cast<void *>(this));
    Set(CURLOPT_HEADERFUNCTION, &Connection::OnHeader);
    Set(CURLOPT_HEADERDATA, static_cast<void *>(this));
}

void Connection::SetAddress() {
    const bool tls = endpoint_.protection == Protection::kFromTheFirstByte;
    const std::string url = endpoint_.protocol + (tls ? "s" : "") + "://" + InUrl(endpoint_.host) +
                            ":" + std::to_string(endpoint_.port) + "/" + endpoint_.path;
    Set(CURLOPT_URL, url.c_str());
    if (endpoint_.address.empty())
        return;
    const std::string target =
        "::" + InUrl(endpoint_.address) + ":" + std::to_string(endpoint_.port);
    connect_to_.reset(curl_slist_append(nullptr, target.c_str()));
    if (connect_to_ == nullptr)
        throw std::bad_alloc();
    Set(CURLOPT_CONNECT_TO, connect_to_.get());
}

void Connection::SetProtection() {
    long use = CURLUSESSL_NONE;
    if (endpoint_.protection == Protection::kUpgradeRequired)
        use = CURLUSESSL_ALL;
    else if (endpoint_.protection == Protection::kUpgradeWhenOffered)
        use = CURLUSESSL_TRY;
    Set(CURLOPT_USE_SSL, use);
    if (const char *file = ::secure_getenv("KES_CAFILE"); file != nullptr && *file != '\0') {
        Set(CURLOPT_CAINFO, file);
        Set(CURLOPT_CAPATH, static_cast<char *>(nullptr));
    }
}

void Connection::SetVerification(bool verify) {
    Set(CURLOPT_SSL_VERIFYPEER, verify ? 1L : 0L);
    Set(CURLOPT_SSL_VERIFYHOST, verify ? 2L : 0L);
}

CURLcode Connection::Perform() {
    CURLcode result = PerformOnce();
    if (IsCertificateFault(result) && endpoint_.verify &&
        endpoint_.protection == Protection::kUpgradeWhenOffered) {
        conversation_.Complain("certificate of " + endpoint_.host + " not accepted: " +
                               CauseText(result) + "; going on without verification");
        SetVerification(false);
        result = PerformOnce();
    }
    return result;
}

CURLcode Connection::PerformOnce() {
    const milliseconds remaining = conversation_.TimeLimit().Remaining();
    if (remaining <= milliseconds::zero())
        return CURLE_OPERATION_TIMEDOUT;
    conversation_.Restart();
    error_[0] = '\0';
    protection_noted_ = false;
    const std::string where = endpoint_.address.empty() ? endpoint_.host : endpoint_.address;
    conversation_.Note("connecting to " + InUrl(where) + ":" + std::to_string(endpoint_.port));
    const auto limit = static_cast<long>(std::max(remaining - kEnding, milliseconds(1)).count());
    Set(CURLOPT_TIMEOUT_MS, limit);
    Set(CURLOPT_CONNECTTIMEOUT_MS, limit);
    Set(CURLOPT_SERVER_RESPONSE_TIMEOUT, kNoOwnLimit);
    return curl_easy_perform(handle_.get());
}

int Connection::OnDebug(CURL *, curl_infotype type, char *data, size_t size, void *object) {
    auto &self = *static_cast<Connection *>(object);
    const std::string_view text(data, size);
    try {
        if (type == CURLINFO_HEADER_OUT)
            self.CommandSent(text);
        else if (type == CURLINFO_TEXT && text.starts_with("SSL connection using "))
            self.conversation_.Note(text.substr(0, text.find('\n')));
    } catch (const std::bad_alloc &) {
        // Only a line of the trace is lost.
    }
    return 0;
}

// An empty line is a command of which not one byte could be written yet; before the goodbye that
// does not happen, since the server has read everything that it answered.
void Connection::CommandSent(std::string_view line) {
    if (line.empty() || line.starts_with("QUIT")) {
        curl_easy_setopt(handle_.get(), CURLOPT_SERVER_RESPONSE_TIMEOUT, kGoodbyeSeconds);
        conversation_.Close();
    }
    conversation_.Sent(line);
    NoteProtection();
}

// Says once, when the first command beyond greeting and upgrade goes out, whether others can read
// it.
void Connection::NoteProtection() {
    constexpr std::array<std::string_view, 6> kBefore = {"",         "EHLO", "HELO",
                                                         "STARTTLS", "CAPA", "STLS"};
    if (protection_noted_ || std::ranges::find(kBefore, conversation_.Step()) != kBefore.end())
        return;
    protection_noted_ = true;
    curl_tlssessioninfo *session = nullptr;
    curl_easy_getinfo(handle_.get(), CURLINFO_TLS_SSL_PTR, &session);
    const bool encrypted = session != nullptr && session->internals != nullptr;
    conversation_.Note(encrypted ? "the connection is encrypted" : "the connection is clear text");
}

size_t Connection::OnHeader(char *data, size_t size, size_t count, void *object) {
    auto &self = *static_cast<Connection *>(object);
    try {
        return self.conversation_.Received({data, size * count}) ? size * count : 0;
    } catch (const std::bad_alloc &) {
        return 0;
    }
}

std::string Connection::Describe(CURLcode result) const {
    const std::string &answer = conversation_.Answer();
    std::string text = StepText() + ": ";
    if (answer.empty())
        return text + CauseText(result);
    if (!IsRefusal(result))
        text += CauseText(result) + "; ";
    return text + "the server said \"" + answer + "\"";
}

std::string Connection::StepText() const {
    if (!conversation_.Step().empty())
        return conversation_.Step();
    const auto host = ParseHost(endpoint_.address.empty() ? endpoint_.host : endpoint_.address);
    if (host && !host->is_address && Finished(handle_.get(), CURLINFO_NAMELOOKUP_TIME_T) == 0)
        return "name look-up";
    if (!HasSocket(handle_.get()))
        return "connect";
    if (endpoint_.protection == Protection::kFromTheFirstByte &&
        Finished(handle_.get(), CURLINFO_APPCONNECT_TIME_T) == 0)
        return "TLS";
    return "greeting";
}

std::string Connection::CauseText(CURLcode result) const {
    if (result == CURLE_OPERATION_TIMEDOUT)
        return "not finished within the deadline";
    return error_[0] != '\0' ? error_.data() : curl_easy_strerror(result);
}

}  // namespace session
