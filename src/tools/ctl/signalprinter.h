#pragma once

#include <QDBusMessage>
#include <QObject>
#include <QString>

class Output;
class RuntimeUnit;

/// Prints what the bus tells about the daemon and the runtime, one line each, as it comes.
class SignalPrinter : public QObject
{
    Q_OBJECT

public:
    SignalPrinter(Output &output, RuntimeUnit &unit, bool inJson);

    /// Prints the states as they are, and listens from now on.
    void start();

Q_SIGNALS:
    void busGone();
    /// The output takes no more.
    void outputGone();

private Q_SLOTS:
    void onSignal(const QDBusMessage &message);
    void onOwnerChanged(const QString &service, const QString &oldOwner, const QString &newOwner);
    void onUnitState(const QString &activeState);

private:
    void print(const QString &name, const QVariantList &values);

    Output &m_output;
    RuntimeUnit &m_unit;
    bool m_inJson;
    QString m_unitState;
};
