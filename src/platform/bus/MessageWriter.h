#pragma once

#include "platform/bus/MessageSignature.h"

#include <functional>
#include <string_view>

struct sd_bus_message;

namespace korvex::platform::bus {

/// Writes the arguments of a message, each with the type of its C++ type. Throws BusError:
/// `invalid` for what the bus does not carry, such as text that is not UTF-8, and `tooLarge`: a bus
/// ends the connection of who sends more than it takes.
class MessageWriter {
public:
    static constexpr std::size_t kMostBytes = std::size_t{1024} * 1024;

    explicit MessageWriter(sd_bus_message* message) : m_message(message) {}
    MessageWriter(const MessageWriter&) = delete;
    MessageWriter& operator=(const MessageWriter&) = delete;

    void write(bool value);
    void write(std::uint8_t value) { writeBasic('y', &value, sizeof value); }
    void write(std::int16_t value) { writeBasic('n', &value, sizeof value); }
    void write(std::uint16_t value) { writeBasic('q', &value, sizeof value); }
    void write(std::int32_t value) { writeBasic('i', &value, sizeof value); }
    void write(std::uint32_t value) { writeBasic('u', &value, sizeof value); }
    void write(std::int64_t value) { writeBasic('x', &value, sizeof value); }
    void write(std::uint64_t value) { writeBasic('t', &value, sizeof value); }
    void write(double value) { writeBasic('d', &value, sizeof value); }
    void write(const std::string& text) { writeText('s', text); }
    /// Else a literal would be a bool.
    void write(const char* text) { writeText('s', text); }
    void write(const ObjectPath& path) { writeText('o', path.text); }
    void write(const base::Bytes& bytes);
    void write(const Value& value);

    /// How much was written, in bytes, more or less.
    std::size_t size() const { return m_size; }

    template <typename Element>
    void write(const std::vector<Element>& elements) {
        const Container array(*this, 'a', SignatureOfType<Element>::text());
        for (const auto& each : elements) {
            write(each);
        }
    }
    template <typename Element, typename Order>
    void write(const std::map<std::string, Element, Order>& elements) {
        const auto entry = "s" + SignatureOfType<Element>::text();
        const Container array(*this, 'a', "{" + entry + "}");
        for (const auto& [name, value] : elements) {
            const Container pair(*this, 'e', entry);
            write(name);
            write(value);
        }
    }
    template <typename... Fields>
    void write(const std::tuple<Fields...>& fields) {
        const Container structure(*this, 'r', signatureOf<Fields...>());
        std::apply([this](const auto&... each) { (write(each), ...); }, fields);
    }

private:
    struct ContentWriter;
    /// Open until its end; what is thrown meanwhile gives the whole message up.
    class Container {
    public:
        Container(MessageWriter& writer, char type, const std::string& contents);
        ~Container();
        Container(const Container&) = delete;
        Container& operator=(const Container&) = delete;

    private:
        sd_bus_message* m_message;
    };

    void writeBasic(char type, const void* value, std::size_t size);
    void writeText(char type, const std::string& text);
    void count(std::size_t size);

    sd_bus_message* m_message;
    std::size_t m_size = 0;
};

/// Writes the arguments of one message.
using Arguments = std::function<void(MessageWriter&)>;

template <typename... Types>
Arguments arguments(Types... values) {
    return [values = std::make_tuple(std::move(values)...)](MessageWriter& writer) {
        std::apply([&writer](const auto&... each) { (writer.write(each), ...); }, values);
    };
}

} // namespace korvex::platform::bus
