#include "daemon/overthebus.h"
#include "daemon/plainvalue.h"
#include "daemon/spelledout.h"
#include "support/testcase.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QtTest>

#include <limits>

namespace {

/// "(iv)"
struct Pair
{
    int number;
    QDBusVariant value;
};

QDBusArgument &operator<<(QDBusArgument &argument, const Pair &pair)
{
    argument.beginStructure();
    argument << pair.number << pair.value;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Pair &pair)
{
    argument.beginStructure();
    argument >> pair.number >> pair.value;
    argument.endStructure();
    return argument;
}

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

QVariant variantOf(const QVariant &value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

} // namespace

Q_DECLARE_METATYPE(Pair)

using Maps = QList<QVariantMap>;
using Texts = QMap<QString, QString>;
using TextsByNumber = QMap<int, QString>;
using MapsByName = QMap<QString, QVariantMap>;
using Lists = QList<QStringList>;
using Numbers = QList<int>;
using NumbersTable = QList<Numbers>;
using ByteArrays = QList<QByteArray>;
using Pairs = QList<Pair>;
using Descriptors = QList<QDBusUnixFileDescriptor>;

class TestPlainValue : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void what_came_over_the_bus_is_unwrapped_data();
    void what_came_over_the_bus_is_unwrapped();
    void numbers_keep_their_type_data();
    void numbers_keep_their_type();
    void file_descriptors_stay_what_they_are();
    void the_value_itself_can_be_read_again();
    void what_did_not_come_over_the_bus_stays_as_it_is_data();
    void what_did_not_come_over_the_bus_stays_as_it_is();
    void an_argument_is_read_from_where_it_stands();
    void an_argument_with_nothing_to_read_is_nothing();
    void the_deepest_nesting_that_the_bus_carries_is_read_data();
    void the_deepest_nesting_that_the_bus_carries_is_read();
    void large_values_are_read_whole();

private:
    OverTheBus m_bus;
};

void TestPlainValue::initTestCase()
{
    qDBusRegisterMetaType<Maps>();
    qDBusRegisterMetaType<Texts>();
    qDBusRegisterMetaType<TextsByNumber>();
    qDBusRegisterMetaType<MapsByName>();
    qDBusRegisterMetaType<Lists>();
    qDBusRegisterMetaType<NumbersTable>();
    qDBusRegisterMetaType<ByteArrays>();
    qDBusRegisterMetaType<Pair>();
    qDBusRegisterMetaType<Pairs>();
    QVERIFY(m_bus.start());
}

void TestPlainValue::what_came_over_the_bus_is_unwrapped_data()
{
    QTest::addColumn<QVariant>("sent");
    QTest::addColumn<QString>("plain");

    const QVariantMap map{{text("a"), 1}, {text("b"), text("two")}};

    QTest::newRow("s") << QVariant(text("x")) << text("'x'");
    QTest::newRow("s, empty") << QVariant(text("")) << text("''");
    QTest::newRow("b") << QVariant(true) << text("bool(true)");
    QTest::newRow("as") << QVariant(QStringList({text("x"), text("y")}))
                        << text("strings['x', 'y']");
    QTest::newRow("as, empty") << QVariant(QStringList()) << text("strings[]");
    QTest::newRow("ay") << QVariant(QByteArray("xy")) << text("QByteArray(xy)");
    QTest::newRow("ai") << QVariant::fromValue(Numbers({1, -2})) << text("[int(1), int(-2)]");
    QTest::newRow("ai, empty") << QVariant::fromValue(Numbers()) << text("[]");
    QTest::newRow("av") << QVariant(QVariantList({text("x"), 5, QStringList(text("y")), map}))
                        << text("['x', int(5), strings['y'], {'a': int(1), 'b': 'two'}]");
    QTest::newRow("av, empty") << QVariant(QVariantList()) << text("[]");
    QTest::newRow("aas") << QVariant::fromValue(Lists({{text("x"), text("y")}, {}}))
                         << text("[strings['x', 'y'], strings[]]");
    QTest::newRow("aai") << QVariant::fromValue(NumbersTable({{1}, {}, {2, 3}}))
                         << text("[[int(1)], [], [int(2), int(3)]]");
    QTest::newRow("aay") << QVariant::fromValue(ByteArrays({"x", ""}))
                         << text("[QByteArray(x), QByteArray()]");
    QTest::newRow("a{sv}") << QVariant(map) << text("{'a': int(1), 'b': 'two'}");
    QTest::newRow("a{sv}, empty") << QVariant(QVariantMap()) << text("{}");
    QTest::newRow("a{sv}, empty key")
        << QVariant(QVariantMap{{text(""), 1}}) << text("{'': int(1)}");
    QTest::newRow("a{sv} with a{sv}")
        << QVariant(QVariantMap{{text("in"), QVariantMap{{text("deeper"), map}}}})
        << text("{'in': {'deeper': {'a': int(1), 'b': 'two'}}}");
    QTest::newRow("a{ss}") << QVariant::fromValue(Texts{{text("a"), text("x")}})
                           << text("{'a': 'x'}");
    QTest::newRow("a{is}") << QVariant::fromValue(TextsByNumber{{-5, text("x")}})
                           << text("{'-5': 'x'}");
    QTest::newRow("a{sa{sv}}") << QVariant::fromValue(MapsByName{{text("m"), map}, {text("n"), {}}})
                               << text("{'m': {'a': int(1), 'b': 'two'}, 'n': {}}");
    QTest::newRow("aa{sv}") << QVariant::fromValue(Maps({map, {}, {{text("c"), true}}}))
                            << text("[{'a': int(1), 'b': 'two'}, {}, {'c': bool(true)}]");
    QTest::newRow("aa{sv}, empty") << QVariant::fromValue(Maps()) << text("[]");
    QTest::newRow("(iv)") << QVariant::fromValue(Pair{5, QDBusVariant(text("x"))})
                          << text("[int(5), 'x']");
    QTest::newRow("a(iv)") << QVariant::fromValue(
                                  Pairs({{1, QDBusVariant(map)},
                                         {2, QDBusVariant(QStringList(text("y")))}}))
                           << text("[[int(1), {'a': int(1), 'b': 'two'}], [int(2), strings['y']]]");
    QTest::newRow("v") << variantOf(text("x")) << text("'x'");
    QTest::newRow("v with v with a{sv}")
        << variantOf(variantOf(map)) << text("{'a': int(1), 'b': 'two'}");
    QTest::newRow("av of v") << QVariant(QVariantList({variantOf(text("x")), variantOf(map)}))
                             << text("['x', {'a': int(1), 'b': 'two'}]");
    QTest::newRow("o") << QVariant::fromValue(QDBusObjectPath(text("/a")))
                       << text("QDBusObjectPath()");
    QTest::newRow("g") << QVariant::fromValue(QDBusSignature(text("as")))
                       << text("QDBusSignature()");
}

void TestPlainValue::what_came_over_the_bus_is_unwrapped()
{
    QFETCH(QVariant, sent);

    const QVariant value = plainValue(m_bus.carryValue(sent));

    QTEST(spelledOut(value), "plain");
}

void TestPlainValue::numbers_keep_their_type_data()
{
    QTest::addColumn<QVariant>("sent");

    QTest::newRow("y") << QVariant::fromValue(uchar(255));
    QTest::newRow("n") << QVariant::fromValue(short(-32768));
    QTest::newRow("q") << QVariant::fromValue(ushort(65535));
    QTest::newRow("i") << QVariant::fromValue(std::numeric_limits<int>::min());
    QTest::newRow("u") << QVariant::fromValue(std::numeric_limits<uint>::max());
    QTest::newRow("x") << QVariant::fromValue(std::numeric_limits<qlonglong>::min());
    QTest::newRow("t") << QVariant::fromValue(std::numeric_limits<qulonglong>::max());
    QTest::newRow("d") << QVariant::fromValue(-0.5);
}

void TestPlainValue::numbers_keep_their_type()
{
    QFETCH(QVariant, sent);

    const QVariantList alone = {plainValue(m_bus.carryValue(sent))};
    const QVariantList inside = plainValue(m_bus.carryValue(QVariantList{sent})).toList();

    QCOMPARE(alone.first().userType(), sent.userType());
    QCOMPARE(alone.first(), sent);
    QCOMPARE(inside.size(), 1);
    QCOMPARE(inside.first().userType(), sent.userType());
    QCOMPARE(inside.first(), sent);
}

// A sender may pass them; nothing of ours takes them.
void TestPlainValue::file_descriptors_stay_what_they_are()
{
    const QDBusUnixFileDescriptor descriptor(0);

    const QVariant one = plainValue(m_bus.carryValue(QVariant::fromValue(descriptor)));
    const QVariant two =
        plainValue(m_bus.carryValue(QVariant::fromValue(Descriptors({descriptor, descriptor}))));

    QCOMPARE(spelledOut(one), text("QDBusUnixFileDescriptor()"));
    QCOMPARE(spelledOut(two), text("[QDBusUnixFileDescriptor(), QDBusUnixFileDescriptor()]"));
}

void TestPlainValue::the_value_itself_can_be_read_again()
{
    const QVariant value = m_bus.carryValue(QVariant::fromValue(Maps({{{text("a"), 1}}})));
    QCOMPARE(value.userType(), qMetaTypeId<QDBusArgument>());

    const QVariant first = plainValue(value);
    const QVariant second = plainValue(value);

    QCOMPARE(spelledOut(first), text("[{'a': int(1)}]"));
    QCOMPARE(spelledOut(second), text("[{'a': int(1)}]"));
}

void TestPlainValue::what_did_not_come_over_the_bus_stays_as_it_is_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("plain");

    QTest::newRow("nothing") << QVariant() << text("nothing");
    QTest::newRow("null string") << QVariant(QString()) << text("null");
    QTest::newRow("list") << QVariant(QVariantList({1, text("x")})) << text("[int(1), 'x']");
    QTest::newRow("map") << QVariant(QVariantMap{{text("a"), 1}}) << text("{'a': int(1)}");
    QTest::newRow("url") << QVariant(QUrl(text("a:b"))) << text("<a:b>");
    QTest::newRow("variant of nothing") << variantOf(QVariant()) << text("nothing");
}

void TestPlainValue::what_did_not_come_over_the_bus_stays_as_it_is()
{
    QFETCH(QVariant, value);

    QTEST(spelledOut(plainValue(value)), "plain");
}

void TestPlainValue::an_argument_is_read_from_where_it_stands()
{
    const QVariant numbers = m_bus.carryValue(QVariant::fromValue(Numbers({5, 6})));
    const auto atNumber = numbers.value<QDBusArgument>();
    const QVariant variants = m_bus.carryValue(QVariantList{text("x"), text("y")});
    const auto atVariant = variants.value<QDBusArgument>();

    atNumber.beginArray();
    atVariant.beginArray();

    QCOMPARE(atNumber.currentType(), QDBusArgument::BasicType);
    QCOMPARE(spelledOut(plainValue(QVariant::fromValue(atNumber))), text("int(5)"));
    QCOMPARE(atVariant.currentType(), QDBusArgument::VariantType);
    QCOMPARE(spelledOut(plainValue(QVariant::fromValue(atVariant))), text("'x'"));

    // An argument that is left inside a container is leaked.
    atNumber.endArray();
    atVariant.endArray();
}

void TestPlainValue::an_argument_with_nothing_to_read_is_nothing()
{
    const QVariant map = m_bus.carryValue(QVariantMap{{text("a"), 1}});
    const auto atEntry = map.value<QDBusArgument>();
    const QVariant empty = m_bus.carryValue(QVariantList());
    const auto atEnd = empty.value<QDBusArgument>();

    atEntry.beginMap();
    atEnd.beginArray();

    QCOMPARE(atEntry.currentType(), QDBusArgument::MapEntryType);
    QCOMPARE(plainValue(QVariant::fromValue(atEntry)), QVariant());
    QCOMPARE(atEnd.currentType(), QDBusArgument::UnknownType);
    QCOMPARE(plainValue(QVariant::fromValue(atEnd)), QVariant());
    QCOMPARE(plainValue(QVariant::fromValue(QDBusArgument())), QVariant());

    atEntry.endMap();
    atEnd.endArray();
}

void TestPlainValue::the_deepest_nesting_that_the_bus_carries_is_read_data()
{
    QTest::addColumn<bool>("inMaps");
    QTest::addColumn<bool>("inLists");

    QTest::newRow("variants") << false << false;
    QTest::newRow("lists") << false << true;
    QTest::newRow("maps") << true << false;
}

void TestPlainValue::the_deepest_nesting_that_the_bus_carries_is_read()
{
    QFETCH(bool, inMaps);
    QFETCH(bool, inLists);
    // The bus allows 64 containers around a value. Two are the argument's own, "a{sv}" counting as
    // an array, an entry and a variant with what it holds.
    QVariant value = text("x");
    QString plain = text("'x'");
    const int levels = inMaps ? 20 : inLists ? 30 : 60;
    for (int i = 0; i < levels; ++i) {
        if (inMaps) {
            value = QVariantMap{{text("m"), value}};
            plain = text("{'m': %1}").arg(plain);
        } else if (inLists) {
            value = QVariantList{value};
            plain = text("[%1]").arg(plain);
        } else {
            value = variantOf(value);
        }
    }

    QCOMPARE(spelledOut(plainValue(m_bus.carryValue(value))), plain);
}

void TestPlainValue::large_values_are_read_whole()
{
    constexpr int Count = 20000;
    QVariantList list;
    QVariantMap map;
    for (int i = 0; i < Count; ++i) {
        list.append(QVariantMap{{text("i"), i}});
        map.insert(QString::number(i), QVariantList{i});
    }

    const QVariantList plainList = plainValue(m_bus.carryValue(list)).toList();
    const QVariantMap plainMap = plainValue(m_bus.carryValue(QVariant(map))).toMap();
    const QVariant longText = plainValue(m_bus.carryValue(QVariantList{QString(4000000, u'x')}));

    QCOMPARE(plainList.size(), Count);
    QCOMPARE(spelledOut(plainList.last()), text("{'i': int(19999)}"));
    QCOMPARE(plainMap.size(), Count);
    QCOMPARE(spelledOut(plainMap.value(text("19999"))), text("[int(19999)]"));
    QCOMPARE(longText.toList().value(0).toString().size(), 4000000);
}

QTEST_GUILESS_MAIN(TestPlainValue)
#include "test_plainvalue.moc"
