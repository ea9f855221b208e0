#include "platform/bus/MessageWriter.h"

#include "base/Text.h"
#include "platform/bus/BusError.h"

#include <systemd/sd-bus.h>

#include <type_traits>

namespace korvex::platform::bus {

namespace {

void require(int result) {
    if (result < 0) {
        throw BusError(BusErrorCase::invalid);
    }
}

} // namespace

MessageWriter::Container::Container(MessageWriter& writer, char type, const std::string& contents)
    : m_message(writer.m_message) {
    writer.count(contents.size() + sizeof(std::uint64_t)); // what it costs to begin one
    require(sd_bus_message_open_container(m_message, type, contents.c_str()));
}

MessageWriter::Container::~Container() {
    // Fails only where something within it was not written, which was thrown.
    sd_bus_message_close_container(m_message);
}

/// What is in a variant, also where that is a container of more such.
struct MessageWriter::ContentWriter {
    MessageWriter& writer;

    void operator()(std::monostate) const { throw BusError(BusErrorCase::invalid); }
    void operator()(const ValueArray& array) const {
        const Container open(writer, 'a', array.element);
        for (const auto& each : array.items) {
            if (each.signature() != array.element) {
                throw BusError(BusErrorCase::invalid);
            }
            std::visit(*this, each.content());
        }
    }
    void operator()(const ValueStructure& structure) const {
        const Container open(writer, 'r', structure.fieldSignature());
        for (const auto& each : structure.fields) {
            std::visit(*this, each.content());
        }
    }
    template <typename Kind>
    void operator()(const Kind& content) const {
        writer.write(content);
    }
};

void MessageWriter::write(bool value) {
    const int wide = value ? 1 : 0; // as sd-bus has it
    writeBasic('b', &wide, sizeof wide);
}

void MessageWriter::write(const base::Bytes& bytes) {
    count(bytes.size());
    require(sd_bus_message_append_array(m_message, 'y', bytes.data(), bytes.size()));
}

void MessageWriter::write(const Value& value) {
    const auto signature = value.signature();
    if (signature.empty()) {
        throw BusError(BusErrorCase::invalid);
    }
    const Container variant(*this, 'v', signature);
    std::visit(ContentWriter{*this}, value.content());
}

void MessageWriter::writeBasic(char type, const void* value, std::size_t size) {
    count(size);
    require(sd_bus_message_append_basic(m_message, type, value));
}

void MessageWriter::writeText(char type, const std::string& text) {
    count(text.size());
    if (text.find('\0') != std::string::npos || !base::isValidUtf8(text)) {
        throw BusError(BusErrorCase::invalid);
    }
    require(sd_bus_message_append_basic(m_message, type, text.c_str()));
}

void MessageWriter::count(std::size_t size) {
    m_size += size;
    if (m_size > kMostBytes) {
        throw BusError(BusErrorCase::tooLarge);
    }
}

} // namespace korvex::platform::bus
