#pragma once

#include "binder/intentcodec.h"
#include "binder/messages.h"

#include <QtGlobal>

/// Intents and their bytes at the SDK level under test, for tests of the encoding.
namespace SampleIntents {

using Messages::bytes;

inline int sdk()
{
    return qEnvironmentVariableIntValue("TEST_SDK_LEVEL");
}

/// Bytes that are there only at levels at which intents have an identifier.
inline QByteArray identifier(const char *hex)
{
    return sdk() >= 29 ? bytes(hex) : QByteArray();
}

/// An intent whose fields behind the type, but for the identifier, are unset.
inline QByteArray intentBytes(const char *actionDataAndType)
{
    return bytes(actionDataAndType) + identifier("ffffffff") +
           bytes("00000000"   // flags
                 "ffffffff"   // package
                 "ffffffff"   // component
                 "00000000"   // bounds
                 "00000000"   // categories
                 "00000000"   // selector
                 "00000000"   // clip data
                 "feffffff"   // user hint
                 "ffffffff"); // extras
}

inline QByteArray unsetIntentBytes()
{
    return intentBytes("ffffffff 00000000 ffffffff");
}

inline QByteArray encoded(const Intent &intent)
{
    return Messages::written([&](BinderParcel &parcel) { writeIntent(parcel, intent); });
}

inline Intent withAction(const QString &action)
{
    Intent intent;
    intent.action = action;
    return intent;
}

/// Extras of every kind that is read as it was written.
inline QVariantMap extras()
{
    return {{QStringLiteral("a"), QVariant()},
            {QStringLiteral("b"), QStringLiteral("v")},
            {QStringLiteral("c"), -2},
            {QStringLiteral("d"), Q_INT64_C(3)},
            {QStringLiteral("e"), 1.5},
            {QStringLiteral("f"), true},
            {QStringLiteral("g"), QStringList(QStringLiteral("w"))}};
}

inline QByteArray extrasPairBytes()
{
    return bytes("01000000 61000000 ffffffff"
                 "01000000 62000000 00000000 01000000 76000000"
                 "01000000 63000000 01000000 feffffff"
                 "01000000 64000000 06000000 03000000 00000000"
                 "01000000 65000000 08000000 00000000 0000f83f"
                 "01000000 66000000 09000000 01000000"
                 "01000000 67000000 0e000000 01000000 01000000 77000000");
}

inline QByteArray extrasBytes()
{
    return bytes("84000000 424e444c 07000000") + extrasPairBytes();
}

/// Every field set: a selector within a selector, clip data with two items.
inline Intent fullIntent()
{
    Intent intent;
    intent.action = QStringLiteral("a");
    intent.data = QUrl(QStringLiteral("a:b"));
    intent.type = QStringLiteral("t/x");
    intent.identifier = QStringLiteral("i");
    intent.flags = 0x10000001;
    intent.package = QStringLiteral("p");
    intent.componentPackage = QStringLiteral("c");
    intent.componentClass = QStringLiteral("C");
    intent.sourceBounds = QRect(1, 2, 10, 20);
    intent.categories = QStringList({QStringLiteral("x"), QStringLiteral("y")});
    Intent selector = withAction(QStringLiteral("s"));
    selector.selector = withAction(QStringLiteral("d"));
    intent.selector = selector;
    ClipData clip;
    clip.label = QStringLiteral("l");
    clip.types = QStringList(QStringLiteral("m"));
    clip.date = 5;
    clip.icon = QByteArrayLiteral("\x01\x02\x03\x04\x05");
    ClipDataItem text;
    text.text = QStringLiteral("T");
    text.htmlText = QStringLiteral("H");
    text.intent = withAction(QStringLiteral("n"));
    ClipDataItem link;
    link.uri = QUrl(QStringLiteral("a:b"));
    clip.items = {text, link};
    intent.clipData = clip;
    intent.contentUserHint = 7;
    intent.extras = extras();
    return intent;
}

/// The full intent up to the count of its clip data's items.
inline QByteArray fullBytesBeforeItems()
{
    return bytes("01000000 61000000"                            // action "a"
                 "01000000 03000000 61003a0062000000"           // data "a:b"
                 "03000000 74002f0078000000") +                 // type "t/x"
           identifier("01000000 69000000") +                    // "i"
           bytes("01000010"                                     // flags
                 "01000000 70000000"                            // package "p"
                 "01000000 63000000 01000000 43000000"          // component "c", "C"
                 "01000000 01000000 02000000 0a000000 15000000" // bounds, edges inclusive
                 "02000000 01000000 78000000 01000000 79000000" // categories
                 "01000000"                                     // selector "s"
                 "01000000 73000000 00000000 ffffffff") +
           identifier("ffffffff") +
           bytes("00000000 ffffffff ffffffff 00000000 00000000"
                 "01000000") + // and its selector "d"
           intentBytes("01000000 64000000 00000000 ffffffff") +
           bytes("00000000 feffffff ffffffff"   // the rest of the selector "s"
                 "01000000"                     // clip data
                 "01000000 6c000000"            // label "l"
                 "01000000 01000000 6d000000"   // types "m"
                 "04000000 424e444c 00000000"   // extras, empty but there
                 "05000000 00000000"            // date
                 "05000000 01020304 05000000"); // icon
}

inline QByteArray itemsBytes()
{
    return bytes("02000000"          // items
                 "01000000 54000000" // "T"
                 "01000000 48000000" // "H"
                 "01000000") +
           intentBytes("01000000 6e000000 00000000 ffffffff") +
           bytes("00000000"                             // no uri
                 "ffffffff ffffffff 00000000"           // no text, html text, intent
                 "01000000 03000000 61003a0062000000"); // uri "a:b"
}

inline QByteArray userHintBytes()
{
    return bytes("07000000");
}

inline QByteArray fullBytes()
{
    return fullBytesBeforeItems() + itemsBytes() + userHintBytes() + extrasBytes();
}

} // namespace SampleIntents
