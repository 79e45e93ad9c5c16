#include "binder/intentcodec.h"
#include "fuzz/encoding.h"

#include <QDebug>

#include <algorithm>

// An Intent at SDK level 29, which has every field; a clip; an item of a clip.

namespace {

// Where an item of a clip has no intent, the reader takes the word that the writer writes for one
// that has: both sides are fixed with the runtime image. The rest reads back.

bool readsBack(const ClipData &clip);

bool readsBack(const Intent &intent)
{
    return (!intent.selector || readsBack(*intent.selector)) &&
           (!intent.clipData || readsBack(*intent.clipData));
}

bool readsBack(const ClipDataItem &item)
{
    return item.intent && readsBack(*item.intent);
}

bool readsBack(const ClipData &clip)
{
    return std::all_of(clip.items.begin(), clip.items.end(),
                       [](const ClipDataItem &item) { return readsBack(item); });
}

int depth(const ClipData &clip);

int depth(const Intent &intent)
{
    return 1 + std::max(intent.selector ? depth(*intent.selector) : 0,
                        intent.clipData ? depth(*intent.clipData) : 0);
}

int depth(const ClipDataItem &item)
{
    return item.intent ? 1 + depth(*item.intent) : 0;
}

int depth(const ClipData &clip)
{
    int deepest = 0;
    for (const ClipDataItem &item : clip.items)
        deepest = std::max(deepest, depth(item));
    return deepest;
}

template <typename Value>
void check(const QByteArray &message, Value (*read)(BinderParcel &),
           void (*write)(BinderParcel &, const Value &))
{
    const Value value = Encoding::readFrom(message, read);
    expect(depth(value) <= MaxIntentDepth, "intents are not nested too deep");
    QString text;
    QDebug(&text) << value;
    // Every field has a name, and a character may be printed as an escape sequence.
    expect(text.size() <= message.size() * 100 + 1000, "a printed value is bounded");

    // Qt may read the text of a URL as another one, whose text then stays.
    const QByteArray copy = Encoding::written([&](BinderParcel &parcel) { write(parcel, value); });
    expect(copy.size() <= message.size() * 8 + 256, "no more is written than was read");
    if (readsBack(value))
        Encoding::expectStable(copy, read, write);
}

} // namespace

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    const int form = input.below(3);
    const QByteArray message = input.rest();
    if (form == 0)
        check(message, readIntent, writeIntent);
    else if (form == 1)
        check(message, readClipData, writeClipData);
    else
        check(message, readClipDataItem, writeClipDataItem);
}
