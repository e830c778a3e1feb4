#include "session.h"

#include <sys/socket.h>
#include <unistd.h>

#include "log.h"
#include "ntserver/answers.h"

namespace ntserver {

namespace {

using regstore::Status;
using regstore::Writer;

// Larger replies give their memory back.
constexpr std::size_t kKeptReply = 16384;
constexpr Clock::rep kBusy = 0;

// The answer's text about damage stays within a frame and a caller's patience.
constexpr std::size_t kLongestDamage = 1024;

bool IsRoot(int socket) noexcept {
    struct ucred peer = {};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == 0;
}

}  // namespace

Session::Session(base::UniqueDescriptor socket, const Service &service)
    : channel_(std::move(socket)),
      service_(service),
      reader_(&service.store),
      may_write_(IsRoot(channel_.Descriptor())),
      resting_since_(Clock::now().time_since_epoch().count()) {}

std::chrono::milliseconds Session::Rest() const noexcept {
    const Clock::rep since = resting_since_;
    if (since == kBusy)
        return {};
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch() -
                                                                 Clock::duration(since));
}

void Session::End() noexcept {
    ::shutdown(channel_.Descriptor(), SHUT_RDWR);
}

void Session::EndRest() noexcept {
    ::shutdown(channel_.Descriptor(), SHUT_RD);
}

void Session::Run() {
    if (!Handshake())
        return;
    Frame frame;
    while (true) {
        resting_since_ = Clock::now().time_since_epoch().count();
        const Transfer received = channel_.Receive(kFrameLimit, &frame);
        resting_since_ = kBusy;
        if (received == Transfer::kMalformed)
            Log(Priority::kWarning, "a client sent a frame that is too large");
        if (received != Transfer::kDone)
            return;
        if (!Serve(frame)) {
            Log(Priority::kWarning, "a client sent something malformed, or does not listen");
            return;
        }
    }
}

bool Session::Handshake() {
    Frame frame;
    HelloRequest request;
    if (!channel_.SetPatience(kHandshakeLimit) ||
        channel_.Receive(kHandshakeLimit, &frame) != Transfer::kDone)
        return false;
    resting_since_ = kBusy;
    if (frame.operation != Operation::kHello || !DecodeWhole(frame.payload, &request) ||
        request.magic != kMagic)
        return false;
    if (request.version != kProtocolVersion) {
        Log(Priority::kWarning, "a client speaks version %u of the protocol", request.version);
        ReplyStatus(frame, Status::kInvalidParameter);
        return false;
    }
    HelloAnswer answer;
    answer.version = kProtocolVersion;
    service_.store.Describe(&answer);
    return Reply(frame, Status::kSuccess, answer) && channel_.SetPatience({});
}

// Answers one request; false ends the connection.
bool Session::Serve(const Frame &frame) {
    if (batch_.Begun() && frame.operation != Operation::kBatchChanges &&
        frame.operation != Operation::kBatchCommit)
        return false;
    switch (frame.operation) {
        case Operation::kOpenKey:
            return ServeRead<PathRequest, KeyAnswer>(frame);
        case Operation::kQueryValue:
            return ServeRead<QueryValueRequest, ValueAnswer>(frame);
        case Operation::kEnumKey:
            return ServeRead<EnumKeyRequest, EnumKeyAnswer>(frame);
        case Operation::kEnumValue:
            return ServeRead<EnumValueRequest, EnumValueAnswer>(frame);
        case Operation::kQueryKey:
            return ServeRead<QueryKeyRequest, QueryKeyAnswer>(frame);
        case Operation::kQueryServer:
            return QueryServer(frame);
        case Operation::kVerify:
            return Verify(frame);
        case Operation::kBatchChanges:
            return AddToBatch(frame);
        case Operation::kBatchCommit:
            return CommitBatch(frame);
        default:
            return ServeChange(frame);
    }
}

template <typename Request, typename Answer>
bool Session::ServeRead(const Frame &frame) {
    Request request;
    if (!DecodeWhole(frame.payload, &request))
        return false;
    const Status status = reader_.Read([&](regstore::Reader &reader) {
        Answer answer;
        const Status found = AnswerTo(request, reader, &answer);
        // Into the reply while the snapshot lasts; sent after it, because a client that does not
        // listen must not hold old pages.
        if (found == Status::kSuccess)
            BuildReply(frame, found, answer);
        return found;
    });
    return status == Status::kSuccess ? SendReply() : ReplyStatus(frame, status);
}

bool Session::ServeChange(const Frame &frame) {
    switch (frame.operation) {
        case Operation::kCreateKey:
            return CreateKey(frame);
        case Operation::kSetValue:
            return Change<SetValueRequest>(frame, [](const auto &request, Writer &writer) {
                return writer.SetValue(request.key, request.name, request.type, request.data);
            });
        case Operation::kDeleteKey:
            return Change<PathRequest>(frame, [](const auto &request, Writer &writer) {
                return writer.DeleteKey(request.key, request.path);
            });
        case Operation::kDeleteValue:
            return Change<NameRequest>(frame, [](const auto &request, Writer &writer) {
                return writer.DeleteValue(request.key, request.name);
            });
        default:
            return false;
    }
}

// A change that is answered with its status alone.
template <typename Request, typename Function>
bool Session::Change(const Frame &frame, Function function) {
    Request request;
    if (!DecodeWhole(frame.payload, &request))
        return false;
    if (!may_write_)
        return ReplyStatus(frame, Status::kAccessDenied);
    return ReplyStatus(
        frame, service_.commits.Run([&](Writer &writer) { return function(request, writer); },
                                    CommitQueue::Sharing::kShared));
}

bool Session::CreateKey(const Frame &frame) {
    CreateKeyRequest request;
    if (!DecodeWhole(frame.payload, &request))
        return false;
    if (!may_write_)
        return ReplyStatus(frame, Status::kAccessDenied);
    // A key that exists takes no place among those who wait for a commit.
    CreateKeyAnswer answer;
    Status status = reader_.Read([&](regstore::Reader &reader) {
        return regstore::FindKey(reader.Current(), request.key, request.path, &answer.key);
    });
    if (status == Status::kNotFound)
        status = service_.commits.Run(
            [&](Writer &writer) {
                return writer.CreateKey(request.key, request.path, request.class_text, &answer.key,
                                        &answer.created);
            },
            CommitQueue::Sharing::kShared);
    return status == Status::kSuccess ? Reply(frame, status, answer) : ReplyStatus(frame, status);
}

// Changes of those who may not make them are looked at and forgotten; the end of the batch says so.
bool Session::AddToBatch(const Frame &frame) {
    return batch_.Add(frame.payload, may_write_ ? Batch::Keep::kYes : Batch::Keep::kNo);
}

bool Session::CommitBatch(const Frame &frame) {
    BatchCommitRequest request;
    if (!DecodeWhole(frame.payload, &request) || request.changes != batch_.Count())
        return false;
    const Batch batch = std::move(batch_);
    batch_.Clear();
    BatchAnswer answer{request.changes};
    Status status = Status::kSuccess;
    if (!may_write_)
        status = Status::kAccessDenied;
    else if (batch.TooLarge())
        status = Status::kInvalidParameter;
    else
        status = service_.commits.Run(
            [&](Writer &writer) { return batch.Apply(request.key, writer, &answer.failed); },
            CommitQueue::Sharing::kAlone);
    return Reply(frame, status, answer);
}

bool Session::QueryServer(const Frame &frame) {
    EmptyMessage request;
    if (!DecodeWhole(frame.payload, &request))
        return false;
    ServerAnswer answer;
    service_.store.Describe(&answer);
    answer.version = VELOX_VERSION;
    answer.process_id = static_cast<std::uint32_t>(::getpid());
    answer.clients = service_.count_clients();
    return Reply(frame, Status::kSuccess, answer);
}

bool Session::Verify(const Frame &frame) {
    EmptyMessage request;
    if (!DecodeWhole(frame.payload, &request))
        return false;
    const Verification verification =
        service_.store.Verify(kVerifyLimit, [this] { return !service_.ending; });
    if (verification.soundness == Soundness::kUnknown) {
        Log(Priority::kError, "the store could not be verified: %s", verification.damage.c_str());
        return ReplyStatus(frame, Status::kStoreFailed);
    }
    VerifyAnswer answer;
    answer.damage = std::string_view(verification.damage).substr(0, kLongestDamage);
    return Reply(frame, Status::kSuccess, answer);
}

template <typename Answer>
void Session::BuildReply(const Frame &frame, Status status, const Answer &answer) {
    if (reply_.capacity() > kKeptReply)
        reply_ = {};
    reply_.clear();
    FrameBuilder builder(&reply_, frame.operation, frame.tag);
    builder.Payload().Put(static_cast<std::uint32_t>(status));
    builder.Payload().PutMessage(answer);
    builder.Finish();
}

bool Session::SendReply() noexcept {
    return channel_.Send(reply_, Clock::now() + kFrameLimit) == Transfer::kDone;
}

template <typename Answer>
bool Session::Reply(const Frame &frame, Status status, const Answer &answer) {
    BuildReply(frame, status, answer);
    return SendReply();
}

bool Session::ReplyStatus(const Frame &frame, Status status) {
    return Reply(frame, status, EmptyMessage{});
}

}  // namespace ntserver
