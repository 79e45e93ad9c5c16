#pragma once

#include "binder/intent.h"
#include "daemon/overthebus.h"
#include "support/testcase.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

using Maps = QList<QVariantMap>;
using Texts = QMap<QString, QString>;

inline QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

/// Base of the tests of ShareRequest, whose configurations come from a sender on a bus.
class ShareRequestTest : public TestCase
{
    Q_OBJECT

protected:
    /// A configuration that names everything but the resources.
    static QVariantMap configuration(const QString &mimeType, const QVariant &resources);
    static QVariantMap fileConfiguration(const QVariant &resources);

    static QVariant variantOf(const QVariant &value);

    /// The lines of an intent that is sent to the target of configuration().
    static QStringList sent(const char *action, const char *type, const char *extras = nullptr);

    /// The intent for a configuration that a sender puts on the bus.
    std::optional<Intent> intentFor(const QVariantMap &configuration);

    /// Its lines.
    QStringList shared(const QVariantMap &configuration);

protected Q_SLOTS:
    void initTestCase();

private:
    OverTheBus m_bus;
};
