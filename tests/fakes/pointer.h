#pragma once

#include <QtGlobal>

/// What the process under test has at an address that it gave to the driver.
template <typename Item>
const Item *pointer(quint64 address)
{
    return reinterpret_cast<const Item *>(static_cast<quintptr>(address));
}
