#include "app/FileUserDefaults.h"

#include "app/UserFolders.h"
#include "base/Base64.h"
#include "base/FileLock.h"
#include "base/FileReplacement.h"
#include "base/SmallFile.h"
#include "base/Text.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <cassert>
#include <cmath>
#include <utility>

namespace korvex::app {

namespace fs = std::filesystem;

namespace {

/// JSON has no bytes: they stand as {"base64": "…"}, so that no text is taken for bytes.
constexpr const char* kBytesMember = "base64";

/// Far more than all settings together.
constexpr std::size_t kMaximumFileBytes = 16 * 1024 * 1024;

/// A program writes for some milliseconds. One that hangs while it does must not keep the others
/// from going on for ever.
constexpr std::chrono::milliseconds kPatience{2'000};

constexpr const char* kLockExtension = ".lock";
constexpr const char* kDamagedExtension = ".damaged";

fs::path beside(fs::path file, const char* extension) {
    return file += extension;
}

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

    std::optional<std::string> string(std::string_view key) const {
        const auto* value = find(key);
        return value && value->IsString() ? std::optional<std::string>(view(*value)) : std::nullopt;
    }

    rapidjson::Value text(std::string_view value) {
        return rapidjson::Value(reference(value), json.GetAllocator());
    }
};

struct FileUserDefaults::Found {
    enum class Kind { settings, nothing, damaged, unreadable };
    Kind kind;
    std::string contents;
};

FileUserDefaults::FileUserDefaults(fs::path file)
    : m_file(std::move(file)), m_settings(std::make_unique<Settings>()) {
    read();
}

FileUserDefaults::~FileUserDefaults() = default;

fs::path FileUserDefaults::defaultFile() {
    return userFolder("XDG_CONFIG_HOME", ".config") / "korvex" / "settings.json";
}

std::optional<std::string> FileUserDefaults::string(std::string_view key) const {
    return m_settings->string(key);
}

std::optional<std::int64_t> FileUserDefaults::integer(std::string_view key) const {
    const auto* value = m_settings->find(key);
    return value && value->IsInt64() ? std::optional(value->GetInt64()) : std::nullopt;
}

std::optional<double> FileUserDefaults::real(std::string_view key) const {
    const auto* value = m_settings->find(key);
    return value && value->IsNumber() ? std::optional(value->GetDouble()) : std::nullopt;
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
    change(key, [name = std::string(key), value = std::string(value)](Settings& settings) {
        settings.set(name, settings.text(value));
    });
}

void FileUserDefaults::setInteger(std::string_view key, std::int64_t value) {
    change(key, [name = std::string(key), value](Settings& settings) {
        settings.set(name, rapidjson::Value(value));
    });
}

void FileUserDefaults::setReal(std::string_view key, double value) {
    assert(std::isfinite(value));
    change(key, [name = std::string(key), value](Settings& settings) {
        settings.set(name, rapidjson::Value(value));
    });
}

void FileUserDefaults::setBoolean(std::string_view key, bool value) {
    change(key, [name = std::string(key), value](Settings& settings) {
        settings.set(name, rapidjson::Value(value));
    });
}

void FileUserDefaults::setBytes(std::string_view key, const base::Bytes& value) {
    change(key, [name = std::string(key), text = base::base64(value)](Settings& settings) {
        rapidjson::Value object(rapidjson::kObjectType);
        object.AddMember(rapidjson::StringRef(kBytesMember), settings.text(text),
                         settings.json.GetAllocator());
        settings.set(name, std::move(object));
    });
}

void FileUserDefaults::remove(std::string_view key) {
    change(key, [name = std::string(key)](Settings& settings) { settings.remove(name); });
}

std::string FileUserDefaults::settle(std::string_view key,
                                     const std::function<bool(std::string_view)>& isAcceptable,
                                     std::string_view otherwise) {
    const auto hasAnswer = [isAcceptable](const Settings& settings, std::string_view name) {
        const auto held = settings.string(name);
        return held && isAcceptable(*held);
    };
    if (!hasAnswer(*m_settings, key)) {
        // Made while the file is locked: the first of two programs is the one that sets it.
        change(key, [hasAnswer, name = std::string(key),
                     value = std::string(otherwise)](Settings& settings) {
            if (!hasAnswer(settings, name)) {
                settings.set(name, settings.text(value));
            }
        });
    }
    return *m_settings->string(key);
}

void FileUserDefaults::refresh() {
    static_cast<void>(readAndChange());
}

std::unique_ptr<UserDefaults> FileUserDefaults::forAnotherThread() const {
    return std::make_unique<FileUserDefaults>(m_file);
}

FileUserDefaults::Found FileUserDefaults::read() {
    auto contents = base::readSmallFile(m_file, kMaximumFileBytes);
    if (!contents) {
        std::error_code error;
        const auto isThere = fs::status(m_file, error).type() != fs::file_type::not_found;
        return {isThere ? Found::Kind::unreadable : Found::Kind::nothing, {}};
    }
    // Without recursion: a file of brackets alone must not end the program.
    constexpr auto kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag |
                            rapidjson::kParseValidateEncodingFlag;
    auto fresh = std::make_unique<Settings>();
    fresh->json.Parse<kFlags>(contents->data(), contents->size());
    if (!fresh->json.HasParseError() && fresh->json.IsObject()) {
        m_settings = std::move(fresh);
        return {Found::Kind::settings, *std::move(contents)};
    }
    const auto isEmpty = base::trimmed(*contents).empty();
    return {isEmpty ? Found::Kind::nothing : Found::Kind::damaged, *std::move(contents)};
}

void FileUserDefaults::change(std::string_view key, Change change) {
    m_unwritten.insert_or_assign(std::string(key), std::move(change));
    if (write()) {
        m_unwritten.clear();
    }
}

std::optional<FileUserDefaults::Found> FileUserDefaults::readAndChange() {
    auto found = read();
    rapidjson::Document before;
    before.CopyFrom(m_settings->json, before.GetAllocator());
    for (const auto& [key, change] : m_unwritten) {
        change(*m_settings);
    }
    const auto isHeld = found.kind == Found::Kind::settings ||
                        (found.kind == Found::Kind::nothing && m_settings->json.ObjectEmpty());
    return isHeld && before == m_settings->json ? std::nullopt : std::optional(std::move(found));
}

bool FileUserDefaults::write() {
    if (!readAndChange()) {
        return true;
    }
    std::error_code ignored;
    fs::create_directories(m_file.parent_path(), ignored);
    const base::FileLock lock(beside(m_file, kLockExtension), kPatience);
    const auto found = readAndChange();
    if (!found) {
        return true;
    }
    if (found->kind == Found::Kind::unreadable ||
        (found->kind == Found::Kind::damaged &&
         base::replaceFile(beside(m_file, kDamagedExtension), found->contents))) {
        return false;
    }
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter writer(buffer);
    m_settings->json.Accept(writer);
    buffer.Put('\n');
    return !base::replaceFile(m_file, {buffer.GetString(), buffer.GetSize()});
}

} // namespace korvex::app
