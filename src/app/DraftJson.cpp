#include "app/DraftJson.h"

namespace korvex::app {

DraftWriter::DraftWriter(int version) {
    m_writer.StartObject();
    integer("version", version);
}

void DraftWriter::text(const char* key, std::string_view value) {
    m_writer.Key(key);
    m_writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void DraftWriter::integer(const char* key, std::int64_t value) {
    m_writer.Key(key);
    m_writer.Int64(value);
}

void DraftWriter::instant(const char* key, base::Instant value) {
    m_writer.Key(key);
    m_writer.Double(value.seconds);
}

std::string DraftWriter::finish() {
    m_writer.EndObject();
    m_buffer.Put('\n');
    return {m_buffer.GetString(), m_buffer.GetSize()};
}

std::optional<DraftMembers> DraftMembers::of(const std::string& contents, int version) {
    // Without recursion: a file of brackets alone must not end the program.
    constexpr auto kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag |
                            rapidjson::kParseValidateEncodingFlag;
    DraftMembers members;
    members.m_json.Parse<kFlags>(contents.data(), contents.size());
    if (members.m_json.HasParseError() || !members.m_json.IsObject() ||
        members.integer("version") != version) {
        return std::nullopt;
    }
    return members;
}

std::optional<std::string_view> DraftMembers::text(const char* key) const {
    const auto* const value = find(key);
    return value && value->IsString()
               ? std::optional(std::string_view(value->GetString(), value->GetStringLength()))
               : std::nullopt;
}

std::optional<std::int64_t> DraftMembers::integer(const char* key) const {
    const auto* const value = find(key);
    return value && value->IsInt64() ? std::optional(value->GetInt64()) : std::nullopt;
}

std::optional<base::Uuid> DraftMembers::id(const char* key) const {
    const auto value = text(key);
    return value ? base::Uuid::parse(*value) : std::nullopt;
}

std::optional<base::Instant> DraftMembers::instant(const char* key) const {
    const auto* const value = find(key);
    const auto instant = base::Instant{value && value->IsNumber() ? value->GetDouble() : 0};
    return value && value->IsNumber() && instant.isValid() ? std::optional(instant) : std::nullopt;
}

const rapidjson::Value* DraftMembers::find(const char* key) const {
    const auto member = m_json.FindMember(key);
    return member == m_json.MemberEnd() ? nullptr : &member->value;
}

} // namespace korvex::app
