#include "tools/ctl/signalprinter.h"

#include "config/runtimetext.h"
#include "tools/common/runtimeunit.h"
#include "tools/ctl/output.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

namespace {

const QString Service = QStringLiteral("com.corvo.bramd");

QString daemonText(bool runs)
{
    return runs ? QStringLiteral("running") : QStringLiteral("not running");
}

} // namespace

SignalPrinter::SignalPrinter(Output &output, RuntimeUnit &unit, bool inJson)
    : m_output(output)
    , m_unit(unit)
    , m_inJson(inJson)
{
}

void SignalPrinter::start()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    // Every signal of the interface, whatever object it is about.
    bus.connect(Service, QString(), Service, QString(), this, SLOT(onSignal(QDBusMessage)));
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SIGNAL(busGone()));
    connect(bus.interface(), &QDBusConnectionInterface::serviceOwnerChanged, this,
            &SignalPrinter::onOwnerChanged);
    connect(&m_unit, &RuntimeUnit::activeStateChanged, this, &SignalPrinter::onUnitState);

    print(QStringLiteral("bramd"), {daemonText(bus.interface()->isServiceRegistered(Service))});
    const Outcome watched = m_unit.watch();
    const RuntimeUnit::State state = m_unit.read();
    if (state.outcome.isDone())
        onUnitState(state.activeState);
    reportOutcome(watched.isDone() ? state.outcome : watched);
}

void SignalPrinter::onSignal(const QDBusMessage &message)
{
    print(message.member(), message.arguments());
}

void SignalPrinter::onOwnerChanged(const QString &service, const QString &oldOwner,
                                   const QString &newOwner)
{
    Q_UNUSED(oldOwner)
    if (service == Service)
        print(QStringLiteral("bramd"), {daemonText(!newOwner.isEmpty())});
}

void SignalPrinter::onUnitState(const QString &activeState)
{
    if (activeState == m_unitState)
        return;
    m_unitState = activeState;
    print(QStringLiteral("runtime"), {m_unitState});
}

void SignalPrinter::print(const QString &name, const QVariantList &values)
{
    const QDateTime now = QDateTime::currentDateTime();
    if (m_inJson) {
        m_output.jsonLine(
            QJsonObject{{QStringLiteral("time"),
                         now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODate)},
                        {QStringLiteral("signal"), name},
                        {QStringLiteral("arguments"), QJsonArray::fromVariantList(values)}});
    } else {
        QStringList words{now.toString(QStringLiteral("HH:mm:ss")), name};
        for (const QVariant &value : values)
            words.append(RuntimeText::singleLine(value.toString()));
        m_output.line(words.join(QLatin1Char(' ')));
    }
    if (!m_output.written().isDone())
        Q_EMIT outputGone();
}
