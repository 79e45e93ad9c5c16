#include "platform/host/seat.h"

#include <systemd/sd-login.h>

std::optional<uid_t> activeSeatUser()
{
    uid_t user = 0;
    if (sd_seat_get_active("seat0", nullptr, &user) < 0)
        return std::nullopt;
    return user;
}
