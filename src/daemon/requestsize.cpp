#include "daemon/requestsize.h"

#include "binder/intent.h"
#include "daemon/packagemod.h"

#include <algorithm>

namespace {

/// Of anything that is not mostly text.
constexpr qint64 SmallSize = 64;

/// With the room behind it: a text that came in UTF-8 keeps as many characters as that had bytes.
qint64 sizeOf(const QString &text)
{
    return SmallSize + std::max(text.size(), text.capacity()) * qint64{sizeof(QChar)};
}

qint64 sizeOf(const QVariant &value)
{
    qint64 size = SmallSize;
    switch (value.userType()) {
    case QMetaType::QString:
        return sizeOf(value.toString());
    case QMetaType::QUrl:
        return size + value.toString().size() * qint64{sizeof(QChar)};
    case QMetaType::QByteArray:
        return size + value.toByteArray().size();
    case QMetaType::QStringList: {
        const QStringList texts = value.toStringList();
        for (const QString &text : texts)
            size += sizeOf(text);
        return size;
    }
    case QMetaType::QVariantList: {
        const QVariantList elements = value.toList();
        for (const QVariant &element : elements)
            size += sizeOf(element);
        return size;
    }
    case QMetaType::QVariantMap: {
        const QVariantMap entries = value.toMap();
        for (auto entry = entries.begin(); entry != entries.end(); ++entry)
            size += sizeOf(entry.key()) + sizeOf(entry.value());
        return size;
    }
    }
    return size;
}

} // namespace

qint64 requestSize(const QString &packageName)
{
    return sizeOf(packageName);
}

qint64 requestSize(const PackageMod &request)
{
    return sizeOf(request.path);
}

// Selectors and clips are in no intent of the daemon's making.
qint64 requestSize(const Intent &intent)
{
    qint64 size = sizeOf(QVariant(intent.data)) + sizeOf(QVariant(intent.categories)) +
                  sizeOf(QVariant(intent.extras));
    for (const QString *text : {&intent.action, &intent.type, &intent.package,
                                &intent.componentPackage, &intent.componentClass})
        size += sizeOf(*text);
    return size;
}
