#include "app/FileUserDefaults.h"

#include "app/UserFolders.h"
#include "base/Base64.h"
#include "base/FileReplacement.h"
#include "base/SmallFile.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <utility>

namespace korvex::app {

namespace {

/// JSON has no bytes: they stand as {"base64": "…"}, so that no text is taken for bytes.
constexpr const char* kBytesMember = "base64";

/// Far more than all settings together.
constexpr std::size_t kMaximumFileBytes = 16 * 1024 * 1024;

rapidjson::Value::StringRefType reference(std::string_view text) {
    return {text.data(), static_cast<rapidjson::SizeType>(text.size())};
}

std::string_view view(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength()};
}

} // namespace

struct FileUserDefaults::Settings {
    rapidjson::Document json{rapidjson::kObjectType};

    const rapidjson::Value* find(std::string_view key) const {
        const auto member = json.FindMember(rapidjson::Value(reference(key)));
        return member == json.MemberEnd() ? nullptr : &member->value;
    }

    void remove(std::string_view key) { json.RemoveMember(rapidjson::Value(reference(key))); }

    void set(std::string_view key, rapidjson::Value value) {
        rapidjson::Value name(reference(key), json.GetAllocator());
        if (json.HasMember(name)) {
            json[name] = std::move(value);
        } else {
            json.AddMember(name, value, json.GetAllocator());
        }
    }

    rapidjson::Value text(std::string_view value) {
        return rapidjson::Value(reference(value), json.GetAllocator());
    }
};

FileUserDefaults::FileUserDefaults(std::filesystem::path file)
    : m_file(std::move(file)), m_settings(std::make_unique<Settings>()) {
    read();
}

FileUserDefaults::~FileUserDefaults() = default;

std::filesystem::path FileUserDefaults::defaultFile() {
    return userFolder("XDG_CONFIG_HOME", ".config") / "korvex" / "settings.json";
}

std::optional<std::string> FileUserDefaults::string(std::string_view key) const {
    const auto* value = m_settings->find(key);
    return value && value->IsString() ? std::optional<std::string>(view(*value)) : std::nullopt;
}

std::optional<std::int64_t> FileUserDefaults::integer(std::string_view key) const {
    const auto* value = m_settings->find(key);
    return value && value->IsInt64() ? std::optional(value->GetInt64()) : std::nullopt;
}

std::optional<bool> FileUserDefaults::boolean(std::string_view key) const {
    const auto* value = m_settings->find(key);
    return value && value->IsBool() ? std::optional(value->GetBool()) : std::nullopt;
}

std::optional<base::Bytes> FileUserDefaults::bytes(std::string_view key) const {
    const auto* value = m_settings->find(key);
    if (!value || !value->IsObject()) {
        return std::nullopt;
    }
    const auto member = value->FindMember(kBytesMember);
    return member != value->MemberEnd() && member->value.IsString()
               ? base::bytesOfBase64(view(member->value))
               : std::nullopt;
}

void FileUserDefaults::setString(std::string_view key, std::string_view value) {
    change([&](Settings& settings) { settings.set(key, settings.text(value)); });
}

void FileUserDefaults::setInteger(std::string_view key, std::int64_t value) {
    change([&](Settings& settings) { settings.set(key, rapidjson::Value(value)); });
}

void FileUserDefaults::setBoolean(std::string_view key, bool value) {
    change([&](Settings& settings) { settings.set(key, rapidjson::Value(value)); });
}

void FileUserDefaults::setBytes(std::string_view key, const base::Bytes& value) {
    change([&](Settings& settings) {
        rapidjson::Value object(rapidjson::kObjectType);
        object.AddMember(rapidjson::StringRef(kBytesMember), settings.text(base::base64(value)),
                         settings.json.GetAllocator());
        settings.set(key, std::move(object));
    });
}

void FileUserDefaults::remove(std::string_view key) {
    change([&](Settings& settings) { settings.remove(key); });
}

std::string FileUserDefaults::read() {
    auto contents = base::readSmallFile(m_file, kMaximumFileBytes).value_or(std::string());
    // Without recursion: a file of brackets alone must not end the program.
    constexpr auto kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag |
                            rapidjson::kParseValidateEncodingFlag;
    auto fresh = std::make_unique<Settings>();
    fresh->json.Parse<kFlags>(contents.data(), contents.size());
    if (!fresh->json.HasParseError() && fresh->json.IsObject()) {
        m_settings = std::move(fresh);
    }
    return contents;
}

void FileUserDefaults::change(const std::function<void(Settings&)>& change) {
    const auto before = read();
    change(*m_settings);
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter writer(buffer);
    m_settings->json.Accept(writer);
    buffer.Put('\n');
    const std::string_view after(buffer.GetString(), buffer.GetSize());
    if (after != before) {
        // A setting that cannot be written holds until the program ends.
        static_cast<void>(base::replaceFile(m_file, after));
    }
}

} // namespace korvex::app
