#pragma once

#include <QtGlobal>

class QString;
struct Intent;
struct PackageMod;

/// About how many bytes of memory a request takes.
qint64 requestSize(const QString &packageName);
qint64 requestSize(const PackageMod &request);
qint64 requestSize(const Intent &intent);
