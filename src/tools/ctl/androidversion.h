#pragma once

#include "interface/androidversiondata.h"

#include <QString>

namespace AndroidVersion {

/// E.g. "9 (SDK 28), security patch 2021-05-05"; parts that are not known are left out.
QString text(const AndroidVersionData &version);

} // namespace AndroidVersion
