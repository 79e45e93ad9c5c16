#include "binder/logging.h"

Q_LOGGING_CATEGORY(parcelLog, "com.corvo.bramd.parcel")
Q_LOGGING_CATEGORY(binderLog, "com.corvo.bramd.binder")
