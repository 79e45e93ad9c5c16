#include "binder/requesthandler.h"

#include "binder/commandexecutor.h"
#include "binder/commandstream.h"
#include "binder/context.h"
#include "binder/payloadreader.h"
#include "binder/returnwriter.h"

#include <cerrno>
#include <cstring>
#include <linux/android/binder.h>
#include <string>

namespace SimBinder {

namespace {

template <typename T>
bool take(const std::vector<std::uint8_t> &body, std::size_t *position, T *value)
{
    if (body.size() - *position < sizeof *value)
        return false;
    std::memcpy(value, body.data() + *position, sizeof *value);
    *position += sizeof *value;
    return true;
}

template <typename T>
void append(std::vector<std::uint8_t> *body, const T &value)
{
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(&value);
    body->insert(body->end(), bytes, bytes + sizeof value);
}

Answer answerOf(int result)
{
    Answer answer;
    answer.result = result;
    return answer;
}

} // namespace

RequestHandler::RequestHandler(Context &context, const Quirks &quirks, pid_t pid, uid_t euid,
                               int readinessFd)
    : m_context(context)
    , m_quirks(quirks)
    , m_readinessFd(readinessFd)
    , m_client(context, pid, euid)
{
}

std::optional<Answer> RequestHandler::handle(Request request)
{
    if (!m_isOpen && request.operation != Operation::Open)
        return end("a request before the opening one");
    switch (request.operation) {
    case Operation::Open:
        return open(request);
    case Operation::Map:
        return map(request);
    case Operation::Control:
        return control(request);
    case Operation::WriteRead:
        return writeRead(request);
    case Operation::Close:
        if (const std::size_t unfreed = m_client.area().deliveredCount())
            note("closes with " + std::to_string(unfreed) + " received messages not freed");
        return std::nullopt;
    }
    return end("an unknown request");
}

std::optional<Answer> RequestHandler::open(const Request &request)
{
    std::size_t position = 0;
    std::uint32_t version = 0;
    if (m_isOpen || !take(request.body, &position, &version) || version != ProtocolVersion)
        return end("a wrong opening request");
    m_isOpen = true;
    Answer answer;
    answer.lentFile = m_readinessFd;
    return answer;
}

std::optional<Answer> RequestHandler::map(const Request &request)
{
    std::size_t position = 0;
    MapRequest map;
    if (!take(request.body, &position, &map))
        return end("a short request");
    Answer answer = answerOf(m_client.area().create(map.size, map.address));
    if (answer.result == 0)
        answer.lentFile = m_client.area().memory();
    return answer;
}

std::optional<Answer> RequestHandler::control(const Request &request)
{
    std::size_t position = 0;
    std::uint32_t number = 0;
    if (!take(request.body, &position, &number) ||
        request.body.size() - position != _IOC_SIZE(number))
        return end("a short request");
    flat_binder_object object = {};
    switch (number) {
    case BINDER_VERSION: {
        Answer answer;
        append(&answer.body, binder_version{BINDER_CURRENT_PROTOCOL_VERSION});
        return answer;
    }
    case BINDER_SET_MAX_THREADS:
        return answerOf(0); // how many more threads may be asked for: here none ever is
    case BINDER_SET_CONTEXT_MGR:
        return answerOf(m_context.setContextManager(m_client, object));
    case BINDER_SET_CONTEXT_MGR_EXT:
        take(request.body, &position, &object);
        return answerOf(m_context.setContextManager(m_client, object));
    default:
        return answerOf(-EINVAL);
    }
}

std::optional<Answer> RequestHandler::writeRead(Request &request)
{
    std::size_t position = 0;
    WriteReadRequest header;
    if (!take(request.body, &position, &header) ||
        header.writeSize > request.body.size() - position)
        return end("a short request");
    const std::uint8_t *commands = request.body.data() + position;
    const std::uint8_t *payloads = commands + header.writeSize;
    const std::size_t payloadsSize = request.body.size() - position - header.writeSize;

    Answer answer;
    WriteReadAnswer outcome;
    std::size_t consumed = 0;
    CommandExecutor executor(m_client, PayloadReader(payloads, payloadsSize, &request.files));
    answer.result = executor.run(CommandStream(commands, header.writeSize), &consumed);
    outcome.writeConsumed = consumed;

    ReturnWriter returns(m_client, header.readSize);
    if (answer.result == 0 && header.readSize > 0)
        answer.result = read(header, &returns);
    std::vector<PassedFile> files = returns.takeFiles();
    outcome.readConsumed = returns.bytes().size();
    outcome.fileCount = files.size();

    append(&answer.body, outcome);
    for (PassedFile &passed : files) {
        append(&answer.body, passed.position);
        answer.files.push_back(std::move(passed.file));
    }
    answer.body.insert(answer.body.end(), returns.bytes().begin(), returns.bytes().end());
    return answer;
}

int RequestHandler::read(const WriteReadRequest &header, ReturnWriter *returns)
{
    const bool begins = header.readBegins != 0;
    if (isDue(m_quirks.interruptedReads, &m_readsSinceInterrupted))
        return -EINTR;
    if (begins && isDue(m_quirks.emptyReads, &m_readsSinceEmpty)) {
        returns->writeNothing();
        return 0;
    }
    return returns->run(begins);
}

void RequestHandler::note(const std::string &misuse) const
{
    m_context.misuse().report(m_client.pid(), misuse);
}

std::optional<Answer> RequestHandler::end(const char *misuse) const
{
    note(misuse);
    return std::nullopt;
}

bool RequestHandler::isDue(unsigned period, unsigned *count)
{
    if (period == 0 || ++*count < period)
        return false;
    *count = 0;
    return true;
}

} // namespace SimBinder
