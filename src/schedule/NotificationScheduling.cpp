#include "schedule/NotificationScheduling.h"

namespace korvex::schedule {

std::string_view statusLabel(AuthorizationStatus status) {
    switch (status) {
    case AuthorizationStatus::notDetermined:
        return "Not Requested";
    case AuthorizationStatus::denied:
        return "Disabled";
    case AuthorizationStatus::authorized:
    case AuthorizationStatus::provisional:
    case AuthorizationStatus::ephemeral:
        return "Allowed";
    case AuthorizationStatus::unavailable:
        break;
    }
    return "Unavailable";
}

bool showsNotifications(AuthorizationStatus status) {
    return status == AuthorizationStatus::authorized ||
           status == AuthorizationStatus::provisional || status == AuthorizationStatus::ephemeral;
}

} // namespace korvex::schedule
