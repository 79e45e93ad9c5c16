#pragma once

#include "tools/ctl/invocation.h"

#include <QString>
#include <QVariantMap>

/// The extras of an intent, as the options "--extra", "--extra-int" and "--extra-bool" have them.
struct IntentExtras
{
    QVariantMap values;
    QString error; ///< a sentence; empty when all are well formed

    static IntentExtras parse(const Invocation &invocation);
};
