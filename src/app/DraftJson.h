#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::app {

/// Writes the JSON object of a draft's file (docs/formats/drafts.md).
class DraftWriter {
public:
    explicit DraftWriter(int version);

    /// UTF-8.
    void text(const char* key, std::string_view value);
    void integer(const char* key, std::int64_t value);
    /// A valid one.
    void instant(const char* key, base::Instant value);

    /// The whole object. Once.
    std::string finish();

private:
    rapidjson::StringBuffer m_buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> m_writer{m_buffer};
};

/// The members of such an object; what is missing or of another kind is absent.
class DraftMembers {
public:
    /// Absent for what is no JSON object of this version.
    static std::optional<DraftMembers> of(const std::string& contents, int version);

    std::optional<std::string_view> text(const char* key) const;
    std::optional<std::int64_t> integer(const char* key) const;
    std::optional<base::Uuid> id(const char* key) const;
    std::optional<base::Instant> instant(const char* key) const;

private:
    const rapidjson::Value* find(const char* key) const;

    rapidjson::Document m_json;
};

} // namespace korvex::app
