#include "platform/binder/sdklevel.h"

#include <utility>

namespace Binder {

namespace {

std::function<int()> &source()
{
    static std::function<int()> function;
    return function;
}

} // namespace

void setSdkLevelSource(std::function<int()> newSource)
{
    source() = std::move(newSource);
}

int sdkLevel()
{
    return source() ? source()() : 0;
}

} // namespace Binder
