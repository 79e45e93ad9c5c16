#pragma once

#include "binder/intent.h"
#include "binder/ownedvalue.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <QVector>

class QDebug;

/// One item of an Android clip (ClipData.Item).
struct ClipDataItem
{
    QString text;
    QString htmlText;
    OwnedValue<Intent> intent;
    QUrl uri;
};

/// An Android clip with its description (AOSP frameworks/base,
/// core/java/android/content/ClipData.java and ClipDescription.java).
struct ClipData
{
    QString label;
    QStringList types; ///< MIME types of the description
    QVariantMap extras;
    qint64 date = 0; ///< milliseconds since 1970
    QByteArray icon;
    QVector<ClipDataItem> items;
};

bool operator==(const ClipDataItem &left, const ClipDataItem &right);
bool operator==(const ClipData &left, const ClipData &right);
QDebug operator<<(QDebug debug, const ClipDataItem &item);
QDebug operator<<(QDebug debug, const ClipData &clipData);
