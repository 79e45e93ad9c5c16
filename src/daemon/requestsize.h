#pragma once

#include <QtGlobal>

class QString;
struct Intent;
struct PackageMod;

/// About how many bytes of memory a request takes. Extras of an intent count by what they hold, but
/// for those that are still as the bus sent them: IntentQueue keeps none.
qint64 requestSize(const QString &packageName);
qint64 requestSize(const PackageMod &request);
qint64 requestSize(const Intent &intent);
