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
    // Every signal of the interface, from whatever path: apps that end are told from a path of
    // their own.
    bus.connect(Service, QString(), Service, QString(), this, SLOT(onSignal(QDBusMessage)));
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SIGNAL(busGone()));
    connect(bus.interface(), &QDBusConnectionInterface::serviceOwnerChanged, this,
            &SignalPrinter::onOwnerChanged);
    connect(&m_unit, &RuntimeUnit::changed, this, &SignalPrinter::onUnitChanged);

    print(QStringLiteral("bramd"), {daemonText(bus.interface()->isServiceRegistered(Service))});
    const Outcome watched = m_unit.watch();
    if (watched.isDone())
        onUnitChanged();
    else
        reportOutcome(watched);
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

void SignalPrinter::onUnitChanged()
{
    const RuntimeUnit::State state = m_unit.read();
    if (!state.outcome.isDone() || state.activeState == m_unitState)
        return;
    m_unitState = state.activeState;
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
        return;
    }
    QStringList words{now.toString(QStringLiteral("HH:mm:ss")), name};
    for (const QVariant &value : values)
        words.append(RuntimeText::singleLine(value.toString()));
    m_output.line(words.join(QLatin1Char(' ')));
}
