#pragma once

#include "platform/bus/MessageSignature.h"

#include <cstddef>

struct sd_bus_message;

namespace korvex::platform::bus {

/// How much is taken of one message of another program.
struct Bounds {
    /// Of a string, or of an array of bytes.
    std::size_t bytes = std::size_t{64} * 1024;
    /// Of all of them together.
    std::size_t allBytes = std::size_t{1024} * 1024;
    /// Of all its arrays together.
    std::size_t elements = 4096;
    /// How deep variants, arrays and structures may lie in one another within a variant.
    int depth = 8;
};

/// Reads the arguments of a message one after another. Throws BusError: `unreadable` where one is
/// of another type, `tooLarge` where it exceeds a bound.
class MessageReader {
public:
    /// From the first argument on.
    explicit MessageReader(sd_bus_message* message, const Bounds& bounds = {});
    MessageReader(const MessageReader&) = delete;
    MessageReader& operator=(const MessageReader&) = delete;

    template <typename Type>
    Type take() {
        Type value{};
        read(value);
        return value;
    }

    void read(bool& value);
    void read(std::uint8_t& value) { readBasic('y', &value); }
    void read(std::int16_t& value) { readBasic('n', &value); }
    void read(std::uint16_t& value) { readBasic('q', &value); }
    void read(std::int32_t& value) { readBasic('i', &value); }
    void read(std::uint32_t& value) { readBasic('u', &value); }
    void read(std::int64_t& value) { readBasic('x', &value); }
    void read(std::uint64_t& value) { readBasic('t', &value); }
    void read(double& value) { readBasic('d', &value); }
    void read(std::string& text) { readText('s', text); }
    void read(ObjectPath& path) { readText('o', path.text); }
    void read(base::Bytes& bytes);
    void read(Value& value);

    template <typename Element>
    void read(std::vector<Element>& elements) {
        const Container array(*this, 'a', SignatureOfType<Element>::text());
        while (hasMore()) {
            countElement();
            elements.push_back(take<Element>());
        }
    }
    template <typename Element, typename Order>
    void read(std::map<std::string, Element, Order>& elements) {
        const auto entry = "s" + SignatureOfType<Element>::text();
        const Container array(*this, 'a', "{" + entry + "}");
        while (hasMore()) {
            countElement();
            const Container pair(*this, 'e', entry);
            auto name = take<std::string>();
            elements.insert_or_assign(std::move(name), take<Element>());
        }
    }
    template <typename... Fields>
    void read(std::tuple<Fields...>& fields) {
        const Container structure(*this, 'r', signatureOf<Fields...>());
        std::apply([this](auto&... each) { (this->read(each), ...); }, fields);
    }

private:
    /// Entered until its end.
    class Container {
    public:
        Container(MessageReader& reader, char type, const std::string& contents);
        ~Container();
        Container(const Container&) = delete;
        Container& operator=(const Container&) = delete;

    private:
        sd_bus_message* m_message;
    };

    void readBasic(char type, void* value);
    void readText(char type, std::string& text);
    /// What comes next within a variant, whatever it is.
    Value readContent(int depth);
    Value readArray(const std::string& element, int depth);
    template <typename Kind>
    Value takeAsValue() {
        return Value(take<Kind>());
    }
    bool hasMore();
    void countElement();
    void countBytes(std::size_t size);
    void requireDepth(int depth) const;

    sd_bus_message* m_message;
    Bounds m_bounds;
    std::size_t m_elements = 0;
    std::size_t m_bytes = 0;
};

} // namespace korvex::platform::bus
