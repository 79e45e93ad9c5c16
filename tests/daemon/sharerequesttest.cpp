#include "daemon/sharerequesttest.h"

#include "daemon/sharerequest.h"
#include "daemon/spelledout.h"

#include <QDBusMetaType>
#include <QDBusVariant>
#include <QtTest>

void ShareRequestTest::initTestCase()
{
    qDBusRegisterMetaType<Maps>();
    qDBusRegisterMetaType<Texts>();
    QVERIFY(m_bus.start());
}

QVariantMap ShareRequestTest::configuration(const QString &mimeType, const QVariant &resources)
{
    return {{text("mimeType"), mimeType},
            {text("resources"), resources},
            {text("selectedTransferMethodInfo"),
             QVariantMap{{text("methodId"), text("org.example/org.example.Share")}}}};
}

QVariantMap ShareRequestTest::fileConfiguration(const QVariant &resources)
{
    return configuration(text("image/jpeg"), resources);
}

QVariant ShareRequestTest::variantOf(const QVariant &value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

QStringList ShareRequestTest::sent(const char *action, const char *type, const char *extras)
{
    QStringList lines{text("action 'android.intent.action.%1'").arg(text(action)),
                      text("type '%1'").arg(text(type)), text("package 'org.example'"),
                      text("componentPackage 'org.example'"),
                      text("componentClass 'org.example.Share'")};
    if (extras)
        lines.append(text("extras {%1}").arg(text(extras)));
    return lines;
}

std::optional<Intent> ShareRequestTest::intentFor(const QVariantMap &configuration)
{
    return ShareRequest::fromConfiguration(m_bus.carry(configuration)).toIntent();
}

QStringList ShareRequestTest::shared(const QVariantMap &configuration)
{
    const auto intent = intentFor(configuration);
    return intent ? spelledOut(*intent) : QStringList(text("not shared"));
}
