#include "platform/binder/uniquenumber.h"

namespace Binder {

quint64 uniqueNumber()
{
    static quint64 last = 0;
    return ++last;
}

} // namespace Binder
