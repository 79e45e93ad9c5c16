#pragma once

#include <QByteArray>

#include <sys/types.h>

/// The D-Bus address of a user's session bus on this host.
QByteArray sessionBusAddress(uid_t user);
