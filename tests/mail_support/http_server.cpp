#include "mail_support/http_server.h"

#include <utility>

namespace mail_support {

namespace {

std::size_t LengthOf(const HttpRequest &request) {
    constexpr std::string_view kField = "Content-Length: ";
    for (const std::string &field : request.fields)
        if (field.starts_with(kField))
            return std::stoul(field.substr(kField.size()));
    return 0;
}

}  // namespace

HttpServer::HttpServer(HttpBehaviour behaviour)
    : behaviour_(std::move(behaviour)),
      tls_(MakeTlsContext(behaviour_.certificate)),
      server_([this](Channel &channel) { Talk(channel); }) {}

std::vector<HttpRequest> HttpServer::Requests() {
    const std::lock_guard lock(mutex_);
    return requests_;
}

bool HttpServer::ReadHead(Channel &channel, HttpRequest &request) const {
    request.encrypted = channel.IsEncrypted();
    for (auto line = channel.ReadLine(); line; line = channel.ReadLine()) {
        if (line->empty())
            return true;
        if (request.line.empty())
            request.line = *line;
        else
            request.fields.push_back(*line);
    }
    return false;
}

void HttpServer::Talk(Channel &channel) {
    HttpRequest request;
    const Misdeeds &misdeeds = behaviour_.misdeeds;
    if (tls_ != nullptr && (!Pass(channel, misdeeds, "TLS") || !channel.StartTls(tls_.get())))
        return;
    if (!Pass(channel, misdeeds, "connected") || !ReadHead(channel, request) ||
        !Pass(channel, misdeeds, "head"))
        return;
    const auto body = channel.Read(LengthOf(request));
    if (!body)
        return;
    request.body = *body;
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
    }
    static_cast<void>(Answer(channel, misdeeds, "answer", behaviour_.answer));
}

}  // namespace mail_support
