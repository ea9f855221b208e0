#include "platform/bus/MessageReader.h"

#include "platform/bus/BusError.h"

#include <systemd/sd-bus.h>

#include <cstring>
#include <utility>

namespace korvex::platform::bus {

namespace {

/// Zero says that there is nothing left of what should come, or something else.
void require(int result) {
    if (result <= 0) {
        throw BusError(BusErrorCase::unreadable);
    }
}

} // namespace

MessageReader::Container::Container(MessageReader& reader, char type, const std::string& contents)
    : m_message(reader.m_message) {
    require(sd_bus_message_enter_container(m_message, type, contents.c_str()));
}

MessageReader::Container::~Container() {
    // Fails only where it was not read to its end, because something was thrown.
    sd_bus_message_exit_container(m_message);
}

MessageReader::MessageReader(sd_bus_message* message, const Bounds& bounds)
    : m_message(message), m_bounds(bounds) {
    if (sd_bus_message_rewind(m_message, 1) < 0) {
        throw BusError(BusErrorCase::unreadable);
    }
}

void MessageReader::read(bool& value) {
    int wide = 0; // as sd-bus has it
    readBasic('b', &wide);
    value = wide != 0;
}

void MessageReader::readBasic(char type, void* value) {
    require(sd_bus_message_read_basic(m_message, type, value));
}

void MessageReader::readText(char type, std::string& text) {
    const char* found = nullptr; // the message's own
    require(sd_bus_message_read_basic(m_message, type, &found));
    const auto size = std::strlen(found);
    countBytes(size);
    text.assign(found, size);
}

void MessageReader::read(base::Bytes& bytes) {
    const void* found = nullptr;
    std::size_t size = 0;
    require(sd_bus_message_read_array(m_message, 'y', &found, &size));
    countBytes(size);
    const auto* const first = static_cast<const std::uint8_t*>(found);
    bytes.assign(first, first + size);
}

void MessageReader::read(Value& value) {
    char type = 0;
    const char* contents = nullptr;
    require(sd_bus_message_peek_type(m_message, &type, &contents));
    if (type != 'v') {
        throw BusError(BusErrorCase::unreadable);
    }
    value = readContent(0);
}

Value MessageReader::readContent(int depth) {
    requireDepth(depth);
    char type = 0;
    const char* found = nullptr;
    require(sd_bus_message_peek_type(m_message, &type, &found));
    const std::string contents = found ? found : "";
    switch (type) {
    case 'b':
        return takeAsValue<bool>();
    case 'y':
        return takeAsValue<std::uint8_t>();
    case 'n':
        return takeAsValue<std::int16_t>();
    case 'q':
        return takeAsValue<std::uint16_t>();
    case 'i':
        return takeAsValue<std::int32_t>();
    case 'u':
        return takeAsValue<std::uint32_t>();
    case 'x':
        return takeAsValue<std::int64_t>();
    case 't':
        return takeAsValue<std::uint64_t>();
    case 'd':
        return takeAsValue<double>();
    case 's':
        return takeAsValue<std::string>();
    case 'o':
        return takeAsValue<ObjectPath>();
    case 'v': {
        const Container variant(*this, 'v', contents);
        return readContent(depth + 1);
    }
    case 'a':
        return readArray(contents, depth + 1);
    case 'r': {
        const Container open(*this, 'r', contents);
        ValueStructure structure;
        while (hasMore()) {
            countElement();
            structure.fields.push_back(readContent(depth + 1));
        }
        return Value(std::move(structure));
    }
    default:
        require(sd_bus_message_skip(m_message, nullptr));
        return {};
    }
}

Value MessageReader::readArray(const std::string& element, int depth) {
    requireDepth(depth);
    if (element == "y") {
        return takeAsValue<base::Bytes>();
    }
    if (element == "{sv}") {
        const Container open(*this, 'a', element);
        Dictionary values;
        while (hasMore()) {
            countElement();
            const Container pair(*this, 'e', "sv");
            auto name = take<std::string>();
            values.insert_or_assign(std::move(name), readContent(depth + 1));
        }
        return Value(std::move(values));
    }
    if (element.starts_with('{')) {
        require(sd_bus_message_skip(m_message, nullptr));
        return {};
    }
    const Container open(*this, 'a', element);
    ValueArray array{.element = element};
    while (hasMore()) {
        countElement();
        array.items.push_back(readContent(depth + 1));
    }
    return Value(std::move(array));
}

bool MessageReader::hasMore() {
    const int isAtEnd = sd_bus_message_at_end(m_message, 0);
    if (isAtEnd < 0) {
        throw BusError(BusErrorCase::unreadable);
    }
    return isAtEnd == 0;
}

void MessageReader::countElement() {
    if (++m_elements > m_bounds.elements) {
        throw BusError(BusErrorCase::tooLarge);
    }
}

void MessageReader::countBytes(std::size_t size) {
    m_bytes += size;
    if (size > m_bounds.bytes || m_bytes > m_bounds.allBytes) {
        throw BusError(BusErrorCase::tooLarge);
    }
}

void MessageReader::requireDepth(int depth) const {
    if (depth > m_bounds.depth) {
        throw BusError(BusErrorCase::tooLarge);
    }
}

} // namespace korvex::platform::bus
