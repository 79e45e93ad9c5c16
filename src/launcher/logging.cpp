#include "launcher/logging.h"

Q_LOGGING_CATEGORY(launcherLog, "com.corvo.bramd.launcher")
