#include "binder/clipdata.h"

#include <QDebug>

bool operator==(const ClipDataItem &left, const ClipDataItem &right)
{
    return left.text == right.text && left.htmlText == right.htmlText &&
           left.intent == right.intent && left.uri == right.uri;
}

bool operator==(const ClipData &left, const ClipData &right)
{
    return left.label == right.label && left.types == right.types && left.extras == right.extras &&
           left.date == right.date && left.icon == right.icon && left.items == right.items;
}

QDebug operator<<(QDebug debug, const ClipDataItem &item)
{
    const QDebugStateSaver saver(debug);
    debug << "\n    ClipDataItem:" << item.text << item.htmlText << item.uri;
    if (item.intent)
        debug << "ClipDataItem intent: " << *item.intent;
    return debug;
}

QDebug operator<<(QDebug debug, const ClipData &clipData)
{
    const QDebugStateSaver saver(debug);
    debug << "\n  Clipdata: label:" << clipData.label << ", types:" << clipData.types
          << ", date:" << clipData.date << ", icon size:" << clipData.icon.size()
          << ". extras:" << clipData.extras;
    for (const ClipDataItem &item : clipData.items)
        debug << item;
    return debug;
}
