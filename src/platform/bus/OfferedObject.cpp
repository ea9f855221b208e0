#include "platform/bus/OfferedObject.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace korvex::platform::bus {

namespace {

template <typename Member>
const Member* named(const std::vector<Member>& members, const char* name) {
    const auto found = std::find_if(members.begin(), members.end(),
                                    [&](const auto& each) { return each.name == name; });
    return found == members.end() ? nullptr : &*found;
}

const char* errorName(BusErrorCase which) {
    return which == BusErrorCase::tooLarge     ? "org.freedesktop.DBus.Error.LimitsExceeded"
           : which == BusErrorCase::unreadable ? "org.freedesktop.DBus.Error.InvalidArgs"
                                               : "org.freedesktop.DBus.Error.Failed";
}

} // namespace

/// What sd-bus is given: it must stand still until sd-bus has let go of it, which is not before a
/// method that runs has returned.
struct OfferedObject::Offer : std::enable_shared_from_this<Offer> {
    Offer(Bus& itsBus, std::string itsPath, Interface itsInterface)
        : bus(&itsBus), path(std::move(itsPath)), interface(std::move(itsInterface)) {
        rows.push_back(SD_BUS_VTABLE_START(0));
        for (const auto& method : interface.methods) {
            rows.push_back(SD_BUS_METHOD(method.name.c_str(), method.takes.c_str(),
                                         method.gives.c_str(), &Offer::call,
                                         SD_BUS_VTABLE_UNPRIVILEGED));
        }
        for (const auto& property : interface.properties) {
            rows.push_back(SD_BUS_PROPERTY(property.name.c_str(), property.type.c_str(),
                                           &Offer::get, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE));
        }
        for (const auto& signal : interface.signals) {
            rows.push_back(SD_BUS_SIGNAL(signal.name.c_str(), signal.carries.c_str(), 0));
        }
        rows.push_back(SD_BUS_VTABLE_END);
    }

    static int call(sd_bus_message* message, void* self, sd_bus_error*) {
        const auto offer = static_cast<Offer*>(self)->shared_from_this();
        IncomingCall asked(message, [reference = offer->weak_from_this()] {
            if (const auto answering = reference.lock(); answering && answering->bus) {
                answering->bus->wrote();
            }
        });
        const auto* const method = named(offer->interface.methods, asked.member().c_str());
        if (!method) {
            return -EINVAL;
        }
        try {
            method->carryOut(asked);
        } catch (const BusError& error) {
            answer(asked, errorName(error.which()), error.errorDescription());
        } catch (const base::Error& error) {
            answer(asked, "org.freedesktop.DBus.Error.Failed", error.errorDescription());
        } catch (const std::exception&) {
            answer(asked, "org.freedesktop.DBus.Error.Failed", "");
        }
        return 1;
    }
    static void letGo(void* self) {
        auto& references = static_cast<Offer*>(self)->references;
        const auto last = std::move(references.back());
        references.pop_back();
    }
    static void answer(IncomingCall& asked, const char* name, const std::string& description) {
        if (asked.isOpen()) {
            asked.fail(name, description);
        }
    }
    static int get(sd_bus*, const char*, const char*, const char* name, sd_bus_message* reply,
                   void* self, sd_bus_error*) {
        const auto offer = static_cast<Offer*>(self)->shared_from_this();
        const auto* const property = named(offer->interface.properties, name);
        try {
            MessageWriter writer(reply);
            property->value(writer);
            return 1;
        } catch (const std::exception&) {
            return -EIO;
        }
    }

    /// Null once the object is gone.
    Bus* bus;
    std::string path;
    Interface interface;
    std::vector<sd_bus_vtable> rows;
    /// To itself, one for each time that sd-bus knows it.
    std::vector<std::shared_ptr<Offer>> references;
    SlotPointer slot;
};

OfferedObject::OfferedObject(Bus& bus, std::string path, Interface interface)
    : m_bus(bus), m_offer(std::make_shared<Offer>(bus, std::move(path), std::move(interface))) {
    m_states = m_bus.stateChanged().connect([this](Bus::State state) {
        if (state == Bus::State::connected) {
            offer();
        } else {
            m_offer->slot.reset();
        }
    });
    if (m_bus.isConnected()) {
        offer();
    }
}

OfferedObject::~OfferedObject() {
    m_offer->bus = nullptr;
    m_offer->slot.reset();
}

void OfferedObject::offer() {
    sd_bus_slot* slot = nullptr;
    const auto result = sd_bus_add_object_vtable(m_bus.connection(), &slot, m_offer->path.c_str(),
                                                 m_offer->interface.name.c_str(),
                                                 m_offer->rows.data(), m_offer.get());
    m_offer->slot.reset(slot);
    if (result >= 0) { // else a name is none
        m_offer->references.push_back(m_offer);
        sd_bus_slot_set_destroy_callback(slot, &Offer::letGo);
    }
}

void OfferedObject::propertyChanged(const std::string& name) {
    if (m_offer->slot && m_bus.hasRoom()) {
        sd_bus_emit_properties_changed(m_bus.connection(), m_offer->path.c_str(),
                                       m_offer->interface.name.c_str(), name.c_str(), nullptr);
        m_bus.wrote();
    }
}

bool OfferedObject::emit(const std::string& signal, const Arguments& arguments) {
    return m_bus.emit(
        {.path = m_offer->path, .interface = m_offer->interface.name, .member = signal}, arguments);
}

} // namespace korvex::platform::bus
