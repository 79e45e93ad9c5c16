#include "fakes/fakebinder.h"

#include "fakes/fakeopenfile.h"

#include <QDebug>

#include <cerrno>
#include <cstring>

namespace {

FakeBinder *current = nullptr;

constexpr int ObjectSize = 24;
constexpr quint32 Ping = 0x5f504e47;
enum Code : quint32 { GetService = 1, CheckService = 2, AddService = 3 };

qint32 wordAt(const QByteArray &data, int position)
{
    qint32 word = 0;
    if (position + 4 <= data.size())
        std::memcpy(&word, data.constData() + position, sizeof word);
    return word;
}

// string16 at the position, which moves behind it; null when there is none
QString stringAt(const QByteArray &data, int *position)
{
    const int length = wordAt(data, *position);
    const int size = (length * 2 + 2 + 3) / 4 * 4;
    if (length < 0 || length > data.size() || *position + 4 + size > data.size())
        return QString();
    const QString text = QString::fromUtf16(
        reinterpret_cast<const char16_t *>(data.constData() + *position + 4), length);
    *position += 4 + size;
    return text.isNull() ? QStringLiteral("") : text;
}

} // namespace

std::unique_ptr<Binder::Driver> Binder::Driver::open(const char *device)
{
    return FakeOpenFile::open(current, device);
}

FakeBinder::FakeBinder(const QByteArray &device)
    : m_device(device)
{
    if (current != nullptr)
        violation(QStringLiteral("there are two"));
    current = this;
    startContextManager();
}

FakeBinder::~FakeBinder()
{
    if (m_file != nullptr) {
        violation(QStringLiteral("the file was not closed"));
        m_file->detach();
    }
    current = nullptr;
}

void FakeBinder::violation(const QString &text)
{
    qCritical().noquote() << QStringLiteral("FakeBinder: ") + text;
}

std::shared_ptr<FakeObject> FakeBinder::addService(const QByteArray &name)
{
    auto object = std::make_shared<FakeObject>();
    setService(name, object);
    return object;
}

void FakeBinder::setService(const QByteArray &name, const std::shared_ptr<FakeObject> &object)
{
    m_services[name] = object;
}

void FakeBinder::removeService(const QByteArray &name)
{
    m_services.remove(name);
}

void FakeBinder::startContextManager()
{
    m_contextManager = std::make_shared<FakeObject>();
    m_contextManager->setHandler(
        [this](const FakeTransaction &transaction) { return answerAsServiceManager(transaction); });
}

void FakeBinder::killContextManager()
{
    kill(std::exchange(m_contextManager, nullptr));
    m_services.clear();
    m_registered.clear();
}

void FakeBinder::kill(const std::shared_ptr<FakeObject> &object)
{
    if (object == nullptr || object->isDead())
        return;
    object->markDead();
    if (m_file != nullptr)
        m_file->onDeath(object);
}

void FakeBinder::killRuntime()
{
    const auto services = m_services;
    for (const std::shared_ptr<FakeObject> &service : services)
        kill(service);
    killContextManager();
}

std::shared_ptr<FakeAnswer> FakeBinder::call(quint64 object, quint32 code,
                                             const FakeParcel &request, quint32 flags)
{
    auto answer = std::make_shared<FakeAnswer>();
    if (m_file == nullptr)
        violation(QStringLiteral("called while no file is open"));
    else
        m_file->call({object, code, flags, request, answer, false, nullptr});
    return answer;
}

std::shared_ptr<FakeAnswer> FakeBinder::callAndDie(quint64 object, quint32 code,
                                                   const FakeParcel &request)
{
    auto answer = std::make_shared<FakeAnswer>();
    m_file->call({object, code, 0, request, answer, true, nullptr});
    return answer;
}

void FakeBinder::dropReferences(quint64 object)
{
    m_file->dropReferences(object);
}

void FakeBinder::breakFile()
{
    m_file->breakDown();
}

bool FakeBinder::isIdle() const
{
    return m_file == nullptr || m_file->isIdle();
}

FakeReply FakeBinder::answerAsServiceManager(const FakeTransaction &transaction)
{
    if (transaction.code == Ping)
        return FakeReply();

    int position = 0;
    if (!checkToken(transaction, &position))
        return FakeReply::statusCode(Binder::StatusPermissionDenied);
    const QByteArray name = stringAt(transaction.data, &position).toUtf8();

    switch (transaction.code) {
    case GetService:
    case CheckService:
        if (const auto service = m_services.value(name))
            return FakeReply::data(FakeParcel().object(service));
        if (const quint64 own = m_registered.value(name))
            return FakeReply::data(FakeParcel().ownObject(own));
        return FakeReply::data(FakeParcel().int32(0));
    case AddService: {
        const std::vector<quint64> objects = transaction.sentObjects();
        if (m_registrationStatus != Binder::StatusOk)
            return FakeReply::statusCode(m_registrationStatus);
        if (name.isEmpty() || objects.size() != 1 ||
            transaction.offsets != std::vector<quint64>{static_cast<quint64>(position)} ||
            transaction.data.size() < position + ObjectSize + 4) {
            return FakeReply::statusCode(Binder::StatusPermissionDenied);
        }
        m_registered[name] = objects.front();
        return FakeReply::data(FakeParcel().int32(0));
    }
    default:
        return FakeReply::statusCode(Binder::StatusPermissionDenied);
    }
}

bool FakeBinder::checkToken(const FakeTransaction &transaction, int *position) const
{
    const QString expected = QStringLiteral("android.os.IServiceManager");
    const bool one = m_sdkLevel < 29;
    const bool two = m_sdkLevel == 0 || m_sdkLevel >= 29;
    for (const int start : {4, 8}) {
        if ((start == 4 && !one) || (start == 8 && !two))
            continue;
        *position = start;
        if (stringAt(transaction.data, position) == expected)
            return true;
    }
    return false;
}
