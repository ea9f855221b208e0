#include "app/SettingsObject.h"

#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <utility>

namespace korvex::app {

namespace {

using rapidjson::SizeType;

/// Ours have two.
constexpr int kMostLevels = 64;

// Without recursion: a file of brackets alone must not end the program.
constexpr auto kParsing = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag |
                          rapidjson::kParseValidateEncodingFlag;

rapidjson::Value::StringRefType reference(std::string_view text) {
    return {text.data(), static_cast<SizeType>(text.size())};
}

/// A document that stops to read where it becomes too deep; the reader calls these by their names.
class ShallowDocument : public rapidjson::Document {
    using Whole = rapidjson::Document;

public:
    bool parse(std::string_view text) {
        rapidjson::MemoryStream bytes(text.data(), text.size());
        rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(bytes);
        rapidjson::Reader reader;
        const auto read = [&](Whole&) { return !reader.Parse<kParsing>(stream, *this).IsError(); };
        Populate(read);
        return !reader.HasParseError();
    }

    bool StartObject() { return isShallow() && Whole::StartObject(); }
    bool StartArray() { return isShallow() && Whole::StartArray(); }
    bool EndObject(SizeType count) {
        --m_levels;
        return Whole::EndObject(count);
    }
    bool EndArray(SizeType count) {
        --m_levels;
        return Whole::EndArray(count);
    }

private:
    bool isShallow() { return ++m_levels <= kMostLevels; }

    int m_levels = 0;
};

} // namespace

std::unique_ptr<SettingsObject> SettingsObject::parse(std::string_view text) {
    ShallowDocument read;
    if (!read.parse(text) || !read.IsObject()) {
        return nullptr;
    }
    auto result = std::make_unique<SettingsObject>();
    static_cast<rapidjson::Document&>(read).Swap(result->m_json);
    return result;
}

const rapidjson::Value* SettingsObject::find(std::string_view key) const {
    const auto member = m_json.FindMember(rapidjson::Value(reference(key)));
    return member == m_json.MemberEnd() ? nullptr : &member->value;
}

std::optional<std::string> SettingsObject::string(std::string_view key) const {
    const auto* value = find(key);
    return value && value->IsString() ? std::optional<std::string>(textOf(*value)) : std::nullopt;
}

std::optional<std::string> SettingsObject::json(std::string_view key) const {
    const auto* value = find(key);
    return value ? std::optional(jsonOf(*value)) : std::nullopt;
}

void SettingsObject::set(std::string_view key, const std::optional<std::string>& json) {
    const rapidjson::Value name(reference(key));
    if (json) {
        rapidjson::Document value(&allocator());
        value.Parse<kParsing>(json->data(), json->size());
        if (!m_json.HasMember(name)) {
            m_json.AddMember(rapidjson::Value(reference(key), allocator()), value, allocator());
            return;
        }
        m_json[name] = static_cast<rapidjson::Value&>(value);
    }
    // Whichever of the same name another program reads, it finds what is set.
    using Iterator = rapidjson::Value::ConstMemberIterator;
    auto isFirst = json.has_value();
    Iterator each = m_json.MemberBegin();
    while (each != Iterator(m_json.MemberEnd())) {
        const auto stays = each->name != name || std::exchange(isFirst, false);
        each = stays ? each + 1 : Iterator(m_json.EraseMember(each));
    }
}

std::string SettingsObject::text() const {
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter writer(buffer);
    m_json.Accept(writer);
    buffer.Put('\n');
    return {buffer.GetString(), buffer.GetSize()};
}

std::string jsonOf(const rapidjson::Value& value) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    value.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

std::string jsonOf(std::string_view text) {
    return jsonOf(rapidjson::Value(reference(text)));
}

std::string_view textOf(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

} // namespace korvex::app
