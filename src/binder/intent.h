#pragma once

#include "binder/ownedvalue.h"

#include <QRect>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

class QDebug;
struct ClipData;

/// An Android intent (AOSP frameworks/base, core/java/android/content/Intent.java): what is to be
/// done, with what, by whom. Unset strings are null, never empty: the runtime tells them apart.
struct Intent
{
    /// Android's "current user" (android.os.UserHandle.USER_CURRENT): the runtime leaves content
    /// addresses in the intent as they are.
    static constexpr int CurrentUser = -2;

    Intent();
    Intent(const Intent &other);
    Intent(Intent &&other) noexcept;
    Intent &operator=(const Intent &other);
    Intent &operator=(Intent &&other) noexcept;
    ~Intent();

    QString action;
    QUrl data;
    QString type;       ///< MIME type
    QString identifier; ///< carried from SDK level 29 on
    int flags = 0;      ///< Intent.FLAG_…
    QString package;
    QString componentPackage;
    QString componentClass; ///< carried only with a component package
    QRect sourceBounds;     ///< where on the screen it was asked for; invalid when unset
    QStringList categories;
    OwnedValue<Intent> selector;
    OwnedValue<ClipData> clipData;
    QVariantMap extras; ///< of the kinds that BinderParcel::writeValue() knows
    int contentUserHint = CurrentUser;
};

bool operator==(const Intent &left, const Intent &right);
QDebug operator<<(QDebug debug, const Intent &intent);
