#include "binder/intent.h"

#include "binder/clipdata.h"

#include <QDebug>

// Here, where ClipData is complete.
Intent::Intent() = default;
Intent::Intent(const Intent &other) = default;
Intent::Intent(Intent &&other) noexcept = default;
Intent &Intent::operator=(Intent &&other) noexcept = default;
Intent::~Intent() = default;

// What is copied may be a part of this intent, and must not end halfway.
Intent &Intent::operator=(const Intent &other)
{
    return *this = Intent(other);
}

bool operator==(const Intent &left, const Intent &right)
{
    return left.action == right.action && left.data == right.data && left.type == right.type &&
           left.identifier == right.identifier && left.flags == right.flags &&
           left.package == right.package && left.componentPackage == right.componentPackage &&
           left.componentClass == right.componentClass && left.sourceBounds == right.sourceBounds &&
           left.categories == right.categories && left.selector == right.selector &&
           left.clipData == right.clipData && left.extras == right.extras &&
           left.contentUserHint == right.contentUserHint;
}

QDebug operator<<(QDebug debug, const Intent &intent)
{
    const QDebugStateSaver saver(debug);
    debug << "Intent: action:" << intent.action << " data:" << intent.data
          << " type:" << intent.type << " id:" << intent.identifier << ", flags:" << intent.flags
          << ", package:" << intent.package << " (" << intent.componentPackage << "/"
          << intent.componentClass << ") "
          << ", bounds:" << intent.sourceBounds << ", cat:" << intent.categories
          << ", userhint:" << intent.contentUserHint << ", extras:" << intent.extras;
    if (intent.clipData)
        debug << *intent.clipData;
    if (intent.selector)
        debug << "Selector: " << *intent.selector;
    return debug;
}
