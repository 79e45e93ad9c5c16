#pragma once

#include "binder/clipdata.h"
#include "binder/intent.h"

class BinderParcel;

/// Intents and clips in parcels. What a writer writes, the runtime's Intent.readFromParcel()
/// understands as long as the intent carries no clip data; the forms of clip data are this
/// system's own and fixed with the runtime image. Readers give default values where the message
/// ends early.
///
/// Intents hold intents. What is nested deeper than MaxIntentDepth is left out, with one critical
/// line: the runtime would not follow it either, and hostile data must not use up the stack. A
/// reader takes the message for used up there.
constexpr int MaxIntentDepth = 64;

void writeIntent(BinderParcel &parcel, const Intent &intent);
Intent readIntent(BinderParcel &parcel);

void writeClipData(BinderParcel &parcel, const ClipData &clipData);
ClipData readClipData(BinderParcel &parcel);

void writeClipDataItem(BinderParcel &parcel, const ClipDataItem &item);
ClipDataItem readClipDataItem(BinderParcel &parcel);
