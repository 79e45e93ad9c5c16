#pragma once

#include "binder/intent.h"

#include <QStringList>
#include <QVariant>

/// What a test compares values by where the exact type counts: QVariant finds 5 equal to "5", and
/// QString a null string to an empty one; the runtime does not.
///
/// nothing, null (a string), 'text', strings['a', 'b'], <url>, [list, of, values], {'key': value};
/// every other type as TYPE(text).
QString spelledOut(const QVariant &value);

/// The fields of an intent that are set, one "name value" each, in the order of the record. A
/// string is set when it is not null.
QStringList spelledOut(const Intent &intent);
