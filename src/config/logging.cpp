#include "config/logging.h"

Q_LOGGING_CATEGORY(configLog, "com.corvo.bramd.config")
