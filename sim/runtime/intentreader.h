#pragma once

#include "runtime/parcelreader.h"

#include <QJsonObject>

namespace SimRuntime {

/// Reads an Intent in the layout of this SDK level (AOSP frameworks/base, Intent.readFromParcel)
/// into JSON, unset strings as null. Its clip data has the simpler layout that the runtime's own
/// image understands: plain strings in place of styled text.
QJsonObject readIntent(ParcelReader *reader, int sdk);

} // namespace SimRuntime
