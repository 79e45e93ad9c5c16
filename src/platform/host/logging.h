#pragma once

#include <QLoggingCategory>

/// "com.corvo.bramd.daemon": the daemon core and the host parts that it uses.
Q_DECLARE_LOGGING_CATEGORY(daemonLog)
