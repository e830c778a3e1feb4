#include "delivery.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include <curl/curl.h>
#include <session/conversation.h>

#include "failure.h"

namespace amrvxmn {

namespace {

// What is read of an answer's body, and what of it is told.
constexpr std::size_t kMostBody = 65536;
constexpr std::size_t kMostTold = 200;

// The manager's answer. It is complete with its head: the body only explains a refusal.
struct Answer {
    bool head_is_complete = false;
    std::size_t body_bytes = 0;
    std::string body;  // its beginning

    // Of the lines of the head, what the trace shows.
    std::string TakeHead(std::string_view line) {
        head_is_complete = line.empty();
        return line.starts_with("HTTP/") ? std::string(line) : std::string();
    }

    static size_t Take(char *data, size_t size, size_t count, void *object) {
        auto &self = *static_cast<Answer *>(object);
        const std::size_t length = size * count;
        self.body_bytes += length;
        try {
            self.body.append(data, std::min(length, kMostTold - self.body.size()));
        } catch (const std::bad_alloc &) {
            return 0;
        }
        return self.body_bytes > kMostBody ? 0 : length;
    }
};

struct FreeList {
    void operator()(curl_slist *list) const noexcept { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, FreeList>;

List MakeHeaders() {
    List list;
    // No "Expect": the event goes out at once, with its head.
    for (const std::string &line :
         {std::string("Content-Type: ") + kContentType, std::string("Accept: */*"),
          std::string("Expect:"), std::string("Connection: close")}) {
        curl_slist *longer = curl_slist_append(list.get(), line.c_str());
        if (longer == nullptr)
            throw std::bad_alloc();
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

// Of a request's head, the line that says what it asks.
std::string RequestLine(std::string_view head) {
    return std::string(head.substr(0, head.find_first_of("\r\n")));
}

void SetRequest(session::Connection &connection, const Event &event, curl_slist *headers,
                Answer &answer) {
    connection.Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    connection.Set(CURLOPT_FOLLOWLOCATION, 0L);
    connection.Set(CURLOPT_FORBID_REUSE, 1L);
    connection.Set(CURLOPT_USERAGENT, "velox-report-service/" VELOX_VERSION);
    connection.Set(CURLOPT_HTTPHEADER, headers);
    connection.Set(CURLOPT_POST, 1L);
    connection.Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(event.json.size()));
    connection.Set(CURLOPT_POSTFIELDS, event.json.data());
    connection.Set(CURLOPT_WRITEFUNCTION, &Answer::Take);
    connection.Set(CURLOPT_WRITEDATA, static_cast<void *>(&answer));
}

std::string RefusalText(long status, const std::string &answer, const std::string &body) {
    std::string text = "the manager refused: " + answer;
    if (status >= 300 && status < 400)
        text += " (redirections are not followed)";
    if (!body.empty())
        text += ": " + body;
    return text;
}

}  // namespace

void Deliver(const session::Endpoint &manager, const Event &event,
             const session::Deadline &deadline, const char *function) {
    Answer answer;
    session::Conversation conversation(
        "amrvxmn", function, deadline,
        {RequestLine, [&answer](std::string_view line) { return answer.TakeHead(line); }});
    const List headers = MakeHeaders();
    session::Connection connection(manager, conversation);
    SetRequest(connection, event, headers.get(), answer);
    const CURLcode result = connection.Perform();
    long status = 0;
    curl_easy_getinfo(connection.Handle(), CURLINFO_RESPONSE_CODE, &status);
    if (!answer.head_is_complete || status < 200)
        throw Failure(Result::kNotDelivered, connection.Describe(result));
    if (status >= 300)
        throw Failure(Result::kRefused, RefusalText(status, conversation.Answer(), answer.body));
}

}  // namespace amrvxmn
