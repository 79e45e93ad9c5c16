#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(parcelLog) // "com.corvo.bramd.parcel": the Parcel layer
Q_DECLARE_LOGGING_CATEGORY(binderLog) // "com.corvo.bramd.binder": connections and calls
