#pragma once

#include "fakes/fakeobject.h"
#include "fakes/fakeparcel.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <memory>

class FakeOpenFile;

/// A binder device inside the test program, with a service manager and whatever services a test
/// puts behind it. While an object of this class lives, the library's Driver::open() opens it
/// under its path; without one, and under other paths, there is no device.
///
/// It keeps the books that the kernel keeps. Each violation (a buffer freed twice or not at all, a
/// reference released too often or left over, a call not answered, a file not closed, ...) gives
/// one critical line "FakeBinder: ...", which fails a test derived from TestCase.
class FakeBinder
{
public:
    /// What the driver does differently from now on, as real ones sometimes do.
    struct Quirks
    {
        int protocolVersion = 8;
        bool mapFails = false;
        bool shortWrites = false; ///< takes one command of each write
        int interruptedReads = 0; ///< so many reads end with EINTR, the write half done
        int loneNoops = 0;        ///< so many reads give nothing but BR_NOOP
    };

    explicit FakeBinder(const QByteArray &device = QByteArrayLiteral("/dev/marshhopper"));
    ~FakeBinder();
    FakeBinder(const FakeBinder &) = delete;
    FakeBinder &operator=(const FakeBinder &) = delete;

    Quirks quirks;

    /// The level whose token layout the service manager insists on; 0, the default: any.
    void setSdkLevel(int level) { m_sdkLevel = level; }

    /// A new object, known to the service manager under this name. Replaces an older one.
    std::shared_ptr<FakeObject> addService(const QByteArray &name);
    void setService(const QByteArray &name, const std::shared_ptr<FakeObject> &object);
    void removeService(const QByteArray &name);

    /// The number of the object that the process under test has registered; 0 for none.
    quint64 registeredObject(const QByteArray &name) const { return m_registered.value(name); }

    /// The status with which the service manager answers registrations; 0 accepts them.
    void setRegistrationStatus(Binder::Status status) { m_registrationStatus = status; }

    /// The object at handle 0; it keeps the transactions sent to the service manager.
    const std::shared_ptr<FakeObject> &contextManager() const { return m_contextManager; }
    void killContextManager();

    /// A new context manager that knows no names.
    void startContextManager();

    void kill(const std::shared_ptr<FakeObject> &object);

    /// The runtime's processes all die: services, context manager, callers.
    void killRuntime();

    /// Sends a call to an object of the process under test. It is delivered when the driver would:
    /// not while the process waits for an answer of its own. With FlagOneWay nothing is answered.
    std::shared_ptr<FakeAnswer> call(quint64 object, quint32 code, const FakeParcel &request,
                                     quint32 flags = 0);

    /// As call(), but the caller dies before it is answered.
    std::shared_ptr<FakeAnswer> callAndDie(quint64 object, quint32 code, const FakeParcel &request);

    /// The runtime gives up its references to this object of the process under test.
    void dropReferences(quint64 object);

    /// The file fails from now on, as if the device had gone.
    void breakFile();

    bool isOpen() const { return m_file != nullptr; }
    int timesOpened() const { return m_timesOpened; }
    int ioctlCount() const { return m_ioctlCount; }

    /// How many reads found nothing. A kernel logs each.
    int emptyReads() const { return m_emptyReads; }
    int mappedSize() const { return m_mappedSize; }

    /// Whether nothing waits to be delivered.
    bool isIdle() const;

    /// Critical lines are written for these as they happen.
    static void violation(const QString &text);

private:
    friend class FakeOpenFile;

    FakeReply answerAsServiceManager(const FakeTransaction &transaction);
    bool checkToken(const FakeTransaction &transaction, int *position) const;

    QByteArray m_device;
    FakeOpenFile *m_file = nullptr;
    std::shared_ptr<FakeObject> m_contextManager;
    QMap<QByteArray, std::shared_ptr<FakeObject>> m_services;
    QMap<QByteArray, quint64> m_registered;
    Binder::Status m_registrationStatus = Binder::StatusOk;
    int m_sdkLevel = 0;
    int m_timesOpened = 0;
    int m_ioctlCount = 0;
    int m_emptyReads = 0;
    int m_mappedSize = 0;
};
