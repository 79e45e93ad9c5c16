#include "binder/intentcodec.h"
#include "daemon/intents.h"
#include "daemon/sharerequest.h"
#include "fuzz/encoding.h"
#include "platform/host/privatebus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QDebug>

#include <iterator>
#include <memory>
#include <utility>

// What a caller on the bus puts into the map of "share" and into the arguments of "launchIntent".
//
// The input builds the values; Qt carries them as a message of this process to itself, so that the
// daemon's functions get them wrapped as they come over a bus.

namespace {

using Texts = QMap<QString, QString>;
using Lists = QList<QStringList>;
using Maps = QList<QVariantMap>;

constexpr int MaxDepth = 24; // less than what a bus carries

const char *const Words[] = {"resources",
                             "mimeType",
                             "title",
                             "selectedTransferMethodInfo",
                             "methodId",
                             "name",
                             "linkTitle",
                             "data",
                             "status",
                             "text/plain",
                             "image/jpeg",
                             "org.example/org.example.Share",
                             "/home/phone-user/a b",
                             "file:///home/phone-user/%41",
                             "android.intent.action.MAIN",
                             "https://example.org/?q=%20#f"};

QString makeText(Input &input)
{
    const int kind = input.below(64);
    if (kind < static_cast<int>(std::size(Words)))
        return QString::fromLatin1(Words[kind]);
    return QString::fromUtf8(input.shortBytes());
}

QVariant makeValue(Input &input, int depth);

QVariantMap makeMap(Input &input, int depth)
{
    QVariantMap map;
    for (int count = input.below(6); count > 0; --count) {
        const QString key = makeText(input);
        map.insert(key, makeValue(input, depth + 1));
    }
    return map;
}

QVariantList makeList(Input &input, int depth)
{
    QVariantList list;
    for (int count = input.below(6); count > 0; --count)
        list.append(makeValue(input, depth + 1));
    return list;
}

QStringList makeTexts(Input &input)
{
    QStringList texts;
    for (int count = input.below(6); count > 0; --count)
        texts.append(makeText(input));
    return texts;
}

QVariant makeValue(Input &input, int depth)
{
    if (depth > MaxDepth || input.isEmpty())
        return QStringLiteral("");
    switch (input.below(20)) {
    case 0:
        return input.yes();
    case 1:
        return input.number<qint32>();
    case 2:
        return input.number<quint32>();
    case 3:
        return input.number<qint64>();
    case 4:
        return input.number<quint64>();
    case 5:
        return input.number<double>();
    case 6:
        return QVariant::fromValue(input.number<quint8>());
    case 7:
        return QVariant::fromValue(input.number<qint16>());
    case 8:
        return makeTexts(input);
    case 9:
        return input.shortBytes();
    case 10:
        return makeMap(input, depth);
    case 11:
        return makeList(input, depth);
    case 12:
        return QVariant::fromValue(QDBusVariant(makeValue(input, depth + 1)));
    case 13:
        return QVariant::fromValue(Texts{{makeText(input), makeText(input)}});
    case 14:
        return QVariant::fromValue(Lists{makeTexts(input), makeTexts(input)});
    case 15:
        return QVariant::fromValue(Maps{makeMap(input, depth + 1), makeMap(input, depth + 1)});
    case 16:
        return QVariant::fromValue(QDBusObjectPath(QStringLiteral("/a")));
    case 17:
        return QVariant::fromValue(QDBusSignature(QStringLiteral("a{sv}")));
    default:
        return makeText(input);
    }
}

/// Takes any call.
class Receiver : public QDBusVirtualObject
{
public:
    QString introspect(const QString &) const override { return QString(); }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        arguments = message.arguments();
        return true;
    }

    QVariantList arguments;
};

/// The connection on which this process calls itself.
class Loop
{
public:
    Loop()
    {
        expect(m_bus.start(), "a bus");
        QDBusConnection bus = connection();
        expect(bus.isConnected() && bus.registerVirtualObject(QStringLiteral("/"), &m_receiver),
               "a connection to the bus");
    }

    /// What a method gets of these arguments; nothing when no bus would carry them.
    QVariantList carry(const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            connection().baseService(), QStringLiteral("/"), QString(), QStringLiteral("take"));
        message.setArguments(arguments);
        m_receiver.arguments.clear();
        connection().call(message);
        return std::exchange(m_receiver.arguments, QVariantList());
    }

private:
    QDBusConnection connection() const
    {
        return QDBusConnection::connectToBus(m_bus.address(), QStringLiteral("loop"));
    }

    PrivateBus m_bus;
    Receiver m_receiver;
};

std::unique_ptr<Loop> loop;

/// What the runtime gets of an intent is bounded, and says the same as the intent up to its extras,
/// which may hold values that it is not sent.
void expectSendable(const Intent &intent, qint64 budget)
{
    expect(intent.componentPackage.isEmpty() || !intent.componentClass.isNull(),
           "a component has a class");
    expect(intent.componentPackage.isEmpty() || intent.package == intent.componentPackage,
           "a component is of the package");
    expect(intent.data.isEmpty() || intent.data.isValid(), "a URL");

    const QByteArray message =
        Encoding::written([&intent](BinderParcel &parcel) { writeIntent(parcel, intent); });
    expect(message.size() <= budget, "bounded size of an intent", QString::number(message.size()));
    const Intent read = Encoding::readFrom(message, readIntent);
    expect(read.action == intent.action && read.type == intent.type && read.flags == intent.flags &&
               read.package == intent.package && read.componentPackage == intent.componentPackage &&
               read.componentClass == intent.componentClass && read.categories == intent.categories,
           "the runtime reads what was meant");
    QString text;
    QDebug(&text) << intent;
}

void share(Input &input, qint64 budget)
{
    const QVariantList arguments = loop->carry({makeMap(input, 0)});
    if (arguments.isEmpty())
        return;
    const auto configuration = qdbus_cast<QVariantMap>(arguments.first());
    const auto intent = ShareRequest::fromConfiguration(configuration).toIntent();
    if (!intent)
        return;
    const QStringList keys{QStringLiteral("android.intent.extra.STREAM"),
                           QStringLiteral("android.intent.extra.SUBJECT"),
                           QStringLiteral("android.intent.extra.TEXT")};
    for (auto extra = intent->extras.begin(); extra != intent->extras.end(); ++extra)
        expect(keys.contains(extra.key()), "an extra of a share", extra.key());
    expectSendable(*intent, budget);
}

void launchIntent(Input &input, qint64 budget)
{
    QVariantList sent;
    for (int count = 0; count < 6; ++count)
        sent.append(makeText(input));
    sent.append(makeMap(input, 0));
    const QVariantList arguments = loop->carry(sent);
    if (arguments.size() != sent.size())
        return;
    const auto text = [&arguments](int number) { return arguments.at(number).toString(); };
    expectSendable(Intents::launch(text(0), text(1), text(2), text(3), text(4), text(5),
                                   qdbus_cast<QVariantMap>(arguments.at(6))),
                   budget);
}

} // namespace

void FuzzTarget::prepare()
{
    qDBusRegisterMetaType<Texts>();
    qDBusRegisterMetaType<Lists>();
    qDBusRegisterMetaType<Maps>();
    loop = std::make_unique<Loop>();
}

void FuzzTarget::run(Input input)
{
    // A word is chosen by one byte and may be written as a URL, in two bytes a character.
    const qint64 budget = 10000 + 400 * qint64(input.remaining());
    if (input.yes())
        share(input, budget);
    else
        launchIntent(input, budget);
}
