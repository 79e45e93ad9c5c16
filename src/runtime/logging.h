#pragma once

#include <QLoggingCategory>

/// "com.corvo.bramd.service": the runtime's unit and the daemon's own binder services.
Q_DECLARE_LOGGING_CATEGORY(serviceLog)
