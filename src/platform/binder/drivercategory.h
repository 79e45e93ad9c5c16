#pragma once

#include <QLoggingCategory>

/// Messages of the binder client library: "com.corvo.bramd.driver".
Q_DECLARE_LOGGING_CATEGORY(lcBinderDriver)
