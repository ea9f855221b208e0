#pragma once

#include "platform/bus/Bus.h"

#include <memory>
#include <string>
#include <vector>

struct sd_bus_vtable;

namespace korvex::platform::bus {

/// What other programs may ask of an object: one interface. Arguments of other types are refused
/// before a method is called, and so are those that exceed a bound.
struct Interface {
    struct Method {
        std::string name;
        /// The types of the arguments and of the answer, as the bus writes them.
        std::string takes;
        std::string gives;
        std::function<void(IncomingCall&)> carryOut;
    };
    struct Property {
        std::string name;
        std::string type;
        Arguments value;
    };
    struct Signal {
        std::string name;
        std::string carries;
    };

    std::string name;
    std::vector<Method> methods = {};
    std::vector<Property> properties = {};
    std::vector<Signal> signals = {};

    /// A method whose arguments are of these types: `carryOut(IncomingCall&, const Types&...)`.
    template <typename... Types, typename Function>
    static Method method(std::string name, Function carryOut, std::string gives = {}) {
        return {.name = std::move(name),
                .takes = signatureOf<Types...>(),
                .gives = std::move(gives),
                .carryOut = [carryOut = std::move(carryOut)](IncomingCall& call) {
                    if constexpr (sizeof...(Types) == 0) {
                        carryOut(call);
                    } else if constexpr (sizeof...(Types) == 1) {
                        carryOut(call, call.read<Types...>());
                    } else {
                        std::apply([&](const auto&... each) { carryOut(call, each...); },
                                   call.read<Types...>());
                    }
                }};
    }
    /// A property that may change: `value()` gives what it is now.
    template <typename Type, typename Function>
    static Property property(std::string name, Function value) {
        return {.name = std::move(name),
                .type = signatureOf<Type>(),
                .value = [value = std::move(value)](MessageWriter& writer) {
                    writer.write(Type(value()));
                }};
    }
};

/// An object that other programs find at a path for as long as this lives and there is a bus. Main
/// thread; the bus must outlive it.
class OfferedObject final {
public:
    OfferedObject(Bus& bus, std::string path, Interface interface);
    ~OfferedObject();
    OfferedObject(const OfferedObject&) = delete;
    OfferedObject& operator=(const OfferedObject&) = delete;

    /// Tells those who listen that a property has another value.
    void propertyChanged(const std::string& name);
    /// Sends one of the interface's signals.
    bool emit(const std::string& signal, const Arguments& arguments = {});

private:
    struct Offer;

    void offer();

    Bus& m_bus;
    std::shared_ptr<Offer> m_offer;
    base::Subscription m_states;
};

} // namespace korvex::platform::bus
