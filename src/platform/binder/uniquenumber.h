#pragma once

#include <QtGlobal>

namespace Binder {

/// A number from 1 on that was never given out before in this process. Objects, death requests
/// and handlers are known by such numbers instead of addresses, so that a late word about one that
/// is gone can never hit another.
quint64 uniqueNumber();

} // namespace Binder
