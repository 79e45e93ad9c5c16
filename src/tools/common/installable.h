#pragma once

#include "tools/common/apkfile.h"
#include "tools/common/location.h"
#include "tools/common/outcome.h"

/// A file that is to be installed, and what became clear about it before anybody was asked. The
/// runtime would refuse what is no app, too, but only after it has been started for it.
struct Installable
{
    Outcome outcome; ///< done when the file can be handed over
    ApkFile apk;     ///< empty otherwise

    static Installable examine(const Location &location);
};
