#pragma once

#include <QByteArray>
#include <QVector>

namespace SimRuntime {

/// A PNG file (RFC 2083) of `width` times the number of full rows in `pixels`, 8 bits a channel
/// with alpha.
QByteArray encodePng(int width, const QVector<quint32> &argbPixels);

} // namespace SimRuntime
