#include "platform/binder/drivercategory.h"

Q_LOGGING_CATEGORY(lcBinderDriver, "com.corvo.bramd.driver")
