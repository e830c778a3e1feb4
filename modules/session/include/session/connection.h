// One connection to a server through libcurl, with what all of them have in common: a deadline
// over everything, no proxy, no signals, verified certificates, a traced conversation.
#ifndef SESSION_CONNECTION_H
#define SESSION_CONNECTION_H

#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include <curl/curl.h>

#include "session/conversation.h"

namespace session {

enum class Protection { kNone, kFromTheFirstByte, kUpgradeRequired, kUpgradeWhenOffered };

struct Endpoint {
    std::string protocol;  // "smtp", "pop3" or "http"
    std::string host;      // a name or an address; what the certificate must be for
    std::string address;   // where to connect when the host is not to be looked up; else empty
    unsigned port = 0;
    std::string path;  // of the URL
    Protection protection = Protection::kNone;
    bool verify = true;  // the server's certificate
};

// libcurl could not be set up.
class SetupError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class Connection {
  public:
    // The conversation must outlive the object. Throws SetupError and std::bad_alloc.
    Connection(Endpoint endpoint, Conversation &conversation);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    template <typename Value>
    void Set(CURLoption option, Value value) {
        Check(curl_easy_setopt(handle_.get(), option, value));
    }

    // Does what the options say within the conversation's deadline; a goodbye that libcurl says
    // takes at most one second more. Where protection is used when offered, a server whose
    // certificate is not good is asked once more without verification, and the trace says so.
    CURLcode Perform();

    // What failed, at which step, and what the server said to it.
    std::string Describe(CURLcode result) const;

    CURL *Handle() const noexcept { return handle_.get(); }

  private:
    struct Cleanup {
        void operator()(CURL *handle) const noexcept { curl_easy_cleanup(handle); }
    };
    struct FreeList {
        void operator()(curl_slist *list) const noexcept { curl_slist_free_all(list); }
    };

    static void Check(CURLcode result);
    static int OnDebug(CURL *handle, curl_infotype type, char *data, size_t size, void *object);
    static size_t OnHeader(char *data, size_t size, size_t count, void *object);

    void SetCommonOptions();
    void SetAddress();
    void SetProtection();
    void SetVerification(bool verify);
    CURLcode PerformOnce();
    void CommandSent(std::string_view line);
    void NoteProtection();
    std::string StepText() const;
    std::string CauseText(CURLcode result) const;

    Endpoint endpoint_;
    Conversation &conversation_;
    std::array<char, CURL_ERROR_SIZE> error_{};
    bool protection_noted_ = false;
    std::unique_ptr<curl_slist, FreeList> connect_to_;
    std::unique_ptr<CURL, Cleanup> handle_;  // last: its cleanup still uses what stands above
};

}  // namespace session

#endif  // SESSION_CONNECTION_H
