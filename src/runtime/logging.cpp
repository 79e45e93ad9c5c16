#include "runtime/logging.h"

Q_LOGGING_CATEGORY(serviceLog, "com.corvo.bramd.service")
