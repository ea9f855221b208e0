// A program on the session bus that has a name and does nothing: what the agent's start is measured
// against.

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <cstdlib>

int main(int, char* argv[]) {
    sd_event* event = nullptr;
    sd_bus* bus = nullptr;
    if (sd_event_default(&event) < 0 || sd_bus_open_user(&bus) < 0 ||
        sd_bus_attach_event(bus, event, SD_EVENT_PRIORITY_NORMAL) < 0 ||
        sd_bus_request_name(bus, argv[1], 0) < 0) {
        return EXIT_FAILURE;
    }
    return sd_event_loop(event) < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
