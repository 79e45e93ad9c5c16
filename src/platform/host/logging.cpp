#include "platform/host/logging.h"

Q_LOGGING_CATEGORY(daemonLog, "com.corvo.bramd.daemon")
