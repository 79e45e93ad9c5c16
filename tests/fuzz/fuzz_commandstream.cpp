#include "fuzz/fuzztarget.h"
#include "fuzz/scripteddriver.h"
#include "platform/binder/client.h"
#include "platform/binder/localobject.h"
#include "platform/binder/reader.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/servicemanager.h"
#include "platform/binder/servicename.h"
#include "platform/binder/writer.h"

#include <QCoreApplication>
#include <QDir>

#include <array>
#include <memory>
#include <utility>
#include <vector>

// What the driver says, while this process calls, is called, and drops what it has, in any order.
// The input decides on both, so that one follows the other; see ScriptedDriver.

namespace {

constexpr char Descriptor[] = "a.b";

/// A user of the library that does at any time whatever may be done then.
class User
{
public:
    explicit User(ScriptedDriver::Script *script)
        : m_script(script)
        , m_manager(Binder::ServiceManager::open("/dev/marshhopper"))
    {
        for (std::size_t number = 0; number < m_objects.size(); ++number)
            makeObject(number);
    }

    bool isConnected() const { return m_manager != nullptr; }

    void act();

private:
    void makeObject(std::size_t number);
    void call(bool oneWay);
    std::unique_ptr<Binder::OutgoingReply> serve(const Binder::IncomingRequest &request,
                                                 std::size_t number, Binder::Status *status);
    void read(Binder::Reader reader);
    void write(Binder::Writer writer);

    /// One of the objects of others that are held; null for none.
    std::shared_ptr<Binder::RemoteObject> remote();

    ScriptedDriver::Script *m_script;
    std::unique_ptr<Binder::ServiceManager> m_manager;
    std::array<std::unique_ptr<Binder::LocalObject>, 2> m_objects;
    std::vector<std::shared_ptr<Binder::RemoteObject>> m_remotes;
    std::vector<std::unique_ptr<Binder::ServiceName>> m_names;
    std::vector<Binder::HandlerId> m_nameHandlers;
    std::vector<std::pair<std::shared_ptr<Binder::RemoteObject>, Binder::HandlerId>> m_deaths;
};

template <typename Items>
void dropLast(Items &items)
{
    if (items.empty())
        return;
    auto last = std::move(items.back()); // what ends may come back here
    items.pop_back();
}

void User::makeObject(std::size_t number)
{
    m_objects[number].reset();
    auto object = m_manager == nullptr
                      ? nullptr
                      : m_manager->createLocalObject(
                            Descriptor, [this, number](Binder::IncomingRequest &request, quint32,
                                                       quint32, Binder::Status *status) {
                                return serve(request, number, status);
                            });
    m_script->objects.resize(m_objects.size());
    m_script->objects[number] = object == nullptr ? 0 : object->id();
    m_objects[number] = std::move(object);
}

std::shared_ptr<Binder::RemoteObject> User::remote()
{
    if (m_remotes.empty())
        return nullptr;
    return m_remotes[static_cast<std::size_t>(m_script->input.below(256)) % m_remotes.size()];
}

void User::act()
{
    Input &input = m_script->input;
    switch (input.below(16)) {
    case 0:
    case 1:
        call(false);
        break;
    case 2:
        call(true);
        break;
    case 3:
        if (const auto object = remote())
            m_deaths.emplace_back(object, object->addDeathHandler([this] { act(); }));
        break;
    case 4:
        if (!m_deaths.empty()) {
            m_deaths.back().first->removeHandler(m_deaths.back().second);
            dropLast(m_deaths);
        }
        break;
    case 5:
        dropLast(m_remotes);
        break;
    case 6:
        if (auto object = m_manager->getService("a"))
            m_remotes.push_back(std::move(object));
        break;
    case 7:
        makeObject(static_cast<std::size_t>(input.below(2)));
        break;
    case 8:
        if (const auto &object = m_objects[0]; object != nullptr && m_names.size() < 4)
            m_names.push_back(m_manager->registerName("a", *object));
        break;
    case 9:
        dropLast(m_names);
        break;
    case 10:
        if (m_nameHandlers.size() < 4)
            m_nameHandlers.push_back(m_manager->addRegistrationHandler("b", [this] { act(); }));
        break;
    case 11:
        if (!m_nameHandlers.empty()) {
            m_manager->removeHandler(m_nameHandlers.back());
            m_nameHandlers.pop_back();
        }
        break;
    default:
        break;
    }
}

void User::call(bool oneWay)
{
    const auto client = Binder::Client::create(remote(), Descriptor);
    if (client == nullptr)
        return;
    const auto request = client->createRequest();
    write(request->writer());
    if (oneWay) {
        client->transactOneWay(1, *request);
        return;
    }
    Binder::Status status = Binder::StatusOk;
    const auto reply = client->transact(1, *request, &status);
    expect((reply != nullptr) == (status == Binder::StatusOk), "a reply or a reason");
    if (reply != nullptr)
        read(reply->reader());
}

std::unique_ptr<Binder::OutgoingReply> User::serve(const Binder::IncomingRequest &request,
                                                   std::size_t number, Binder::Status *status)
{
    Input &input = m_script->input;
    read(request.reader());
    const auto &object = m_objects[number];
    auto reply = object == nullptr || input.yes() ? nullptr : object->createReply();
    if (reply != nullptr)
        write(reply->writer());
    for (int count = input.below(4); count > 0; --count)
        act();
    *status = input.below(4) == 1 ? Binder::StatusRefused : Binder::StatusOk;
    return reply;
}

void User::read(Binder::Reader reader)
{
    Input &input = m_script->input;
    for (int count = input.below(6); count > 0; --count) {
        std::shared_ptr<Binder::RemoteObject> object;
        const char16_t *units = nullptr;
        int length = 0;
        qint32 number = 0;
        switch (input.below(3)) {
        case 0:
            if (reader.readNullableObject(&object) && object != nullptr && m_remotes.size() < 16)
                m_remotes.push_back(std::move(object));
            break;
        case 1:
            reader.readString16(&units, &length);
            break;
        default:
            reader.readInt32(&number);
            break;
        }
    }
}

void User::write(Binder::Writer writer)
{
    writer.appendLocalObject(m_objects[m_script->input.yes() ? 1 : 0].get());
    writer.appendByteArray(m_script->input.shortBytes());
}

int openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
}

} // namespace

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    constexpr int MaxEvents = 500;
    const int descriptors = openDescriptors();
    ScriptedDriver::Script script(input);
    ScriptedDriver::script = &script;
    {
        User user(&script);
        for (int event = 0; event < MaxEvents && user.isConnected() && !script.isOver; ++event) {
            if (script.input.yes())
                user.act();
            QCoreApplication::processEvents();
        }
        script.isOver = true;
    }
    for (int event = 0; event < MaxEvents && script.isOpen; ++event)
        QCoreApplication::processEvents();
    expect(!script.isOpen, "the device is closed when nobody uses it");
    ScriptedDriver::script = nullptr;
    expect(openDescriptors() == descriptors, "descriptors are closed");
}
