#include "app/FileUserDefaults.h"

#include "app/SettingsObject.h"
#include "app/UserFolders.h"
#include "base/Base64.h"
#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/FileReplacement.h"
#include "base/SmallFile.h"
#include "base/Text.h"

#include <sys/stat.h>

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>

namespace korvex::app {

namespace fs = std::filesystem;

namespace {

/// JSON has no bytes: they stand as {"base64": "…"}, so that no text is taken for bytes.
constexpr const char* kBytesMember = "base64";

/// Far more than all settings together.
constexpr std::size_t kMaximumFileBytes = 1024 * 1024;

/// A program writes for some milliseconds. Who has to wait for one that hangs while it does goes on
/// and tries again, from then on without waiting; only at the end, and where programs have to
/// agree, is there more time. Where there is a run loop nobody waits: its timer tries again.
constexpr std::chrono::milliseconds kNoPatience{0};
constexpr std::chrono::milliseconds kPatience{50};
constexpr std::chrono::milliseconds kLongPatience{2'000};

using Seconds = std::chrono::duration<double>;
/// What may wait is written when nothing has changed for so long, but not later than this.
constexpr Seconds kPause{1};
constexpr Seconds kLongestPause{5};
constexpr Seconds kUntilUnlocked{0.2};
/// After a failure; twice as long after each further one.
constexpr Seconds kUntilWritable{1};
constexpr Seconds kLongestWait{60};
constexpr int kMostDoublings = 10;
/// In a row: somebody who hangs has the lock.
constexpr int kTakenTooOften = 10;

constexpr const char* kLockExtension = ".lock";
constexpr const char* kDamagedExtension = ".damaged";
constexpr const char* kLogCategory = "settings";

fs::path beside(fs::path file, const std::string& extension) {
    return file += extension;
}

} // namespace

struct FileUserDefaults::Found {
    enum class Kind { settings, nothing, damaged, unreadable };
    Kind kind;
    std::string contents;

    bool operator==(const Found&) const = default;
};

base::FileLock FileUserDefaults::lock(const fs::path& file, std::chrono::milliseconds patience) {
    return {file, patience};
}

FileUserDefaults::FileUserDefaults(fs::path file, base::LogSink* log, Locking locking)
    : m_file(std::move(file)),
      m_log(log),
      m_locking(std::move(locking)),
      m_held(std::make_unique<SettingsObject>()),
      m_settings(std::make_unique<SettingsObject>()) {
    read();
    showChanges();
}

FileUserDefaults::~FileUserDefaults() {
    m_runLoop = nullptr;
    if (!m_unwritten.empty()) {
        write(kLongPatience);
    }
    if (!m_unwritten.empty()) {
        setKept(false);
    }
}

fs::path FileUserDefaults::defaultFile() {
    return userFolder("XDG_CONFIG_HOME", ".config") / "korvex" / "settings.json";
}

bool FileUserDefaults::contains(std::string_view key) const {
    return m_settings->find(key);
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
               ? base::bytesOfBase64(textOf(member->value))
               : std::nullopt;
}

void FileUserDefaults::setString(std::string_view key, std::string_view value) {
    change(key, jsonOf(value));
}

void FileUserDefaults::setInteger(std::string_view key, std::int64_t value) {
    change(key, jsonOf(rapidjson::Value(value)));
}

void FileUserDefaults::setReal(std::string_view key, double value) {
    assert(std::isfinite(value));
    change(key, jsonOf(rapidjson::Value(value)));
}

void FileUserDefaults::setBoolean(std::string_view key, bool value) {
    change(key, jsonOf(rapidjson::Value(value)));
}

void FileUserDefaults::setBytes(std::string_view key, const base::Bytes& value) {
    const auto text = base::base64(value);
    rapidjson::Document object(rapidjson::kObjectType);
    object.AddMember(rapidjson::StringRef(kBytesMember),
                     rapidjson::Value(rapidjson::StringRef(text.data(), text.size())),
                     object.GetAllocator());
    change(key, jsonOf(object));
}

void FileUserDefaults::remove(std::string_view key) {
    change(key, std::nullopt);
}

void FileUserDefaults::replaceString(std::string_view key,
                                     const std::optional<std::string>& expected,
                                     const std::optional<std::string>& wanted) {
    settleChanges(read());
    if (m_settings->string(key) == expected) {
        m_unwritten.insert_or_assign(
            std::string(key),
            Change{.wanted = wanted ? Value(jsonOf(std::string_view(*wanted))) : std::nullopt,
                   .before = m_held->json(key)});
        write(unlessTimed(kPatience));
    }
}

std::string FileUserDefaults::settle(std::string_view key,
                                     const std::function<bool(std::string_view)>& isAcceptable,
                                     std::string_view otherwise) {
    auto held = m_settings->string(key);
    while (!held || !isAcceptable(*held)) {
        // The first of two programs is the one that sets it.
        settleChanges(read());
        if (const auto now = m_settings->string(key); now == held) {
            m_unwritten.insert_or_assign(
                std::string(key), Change{.wanted = jsonOf(otherwise), .before = m_held->json(key)});
            write(unlessTimed(kLongPatience));
        }
        held = m_settings->string(key);
    }
    return *held;
}

void FileUserDefaults::refresh() {
    const auto found = read();
    settleChanges(found);
    // What has failed may do so for ever, and to try it can be noticed like a change.
    if (m_unwritten.empty()) {
        nothingIsLeft();
    } else if (m_failedOn && found != *m_failedOn) {
        write(kNoPatience);
    }
}

void FileUserDefaults::mayWait(std::string_view key) {
    m_mayWait.emplace(key);
}

void FileUserDefaults::setRunLoop(base::RunLoop* runLoop) {
    m_runLoop = runLoop;
    m_timer = nullptr;
    writeLeft();
}

void FileUserDefaults::writeLeft() {
    if (!m_unwritten.empty()) {
        write(kNoPatience);
    }
}

std::unique_ptr<UserDefaults> FileUserDefaults::forAnotherThread() const {
    return std::make_unique<FileUserDefaults>(m_file, m_log, m_locking);
}

FileUserDefaults::Found FileUserDefaults::read() {
    auto contents = base::readSmallFile(m_file, kMaximumFileBytes);
    if (!contents) {
        std::error_code error;
        const auto isThere = fs::status(m_file, error).type() != fs::file_type::not_found;
        return {isThere ? Found::Kind::unreadable : Found::Kind::nothing, {}};
    }
    if (auto fresh = SettingsObject::parse(*contents)) {
        m_held = std::move(fresh);
        return {Found::Kind::settings, *std::move(contents)};
    }
    const auto isEmpty = base::trimmed(*contents).empty();
    return {isEmpty ? Found::Kind::nothing : Found::Kind::damaged, *std::move(contents)};
}

void FileUserDefaults::settleChanges(const Found& found) {
    std::erase_if(m_unwritten, [&](const auto& each) {
        const auto& [key, change] = each;
        const auto now = m_held->json(key);
        const auto isThere = found.kind == Found::Kind::settings || !change.wanted;
        return now == change.wanted ? isThere : !change.isNew && now != change.before;
    });
    showChanges();
}

void FileUserDefaults::showChanges() {
    m_settings = std::make_unique<SettingsObject>(*m_held);
    for (const auto& [key, change] : m_unwritten) {
        m_settings->set(key, change.wanted);
    }
}

void FileUserDefaults::nothingIsLeft() {
    m_unwritten.clear();
    m_failures = 0;
    m_failedOn = nullptr;
    m_waitsSince.reset();
    m_timer = nullptr;
    setKept(true);
}

void FileUserDefaults::change(std::string_view key, Value wanted) {
    const auto found = read();
    const auto waits = m_runLoop && m_mayWait.contains(key);
    m_unwritten.insert_or_assign(
        std::string(key),
        Change{.wanted = std::move(wanted), .before = m_held->json(key), .isNew = !waits});
    settleChanges(found);
    if (m_unwritten.empty()) {
        nothingIsLeft();
    } else if (waits) {
        const auto now = m_runLoop->elapsed();
        m_waitsSince = m_waitsSince.value_or(now);
        writeAfter(std::clamp(*m_waitsSince + kLongestPause - now, Seconds(0), kPause));
    } else {
        write(unlessTimed(kPatience));
    }
}

std::chrono::milliseconds FileUserDefaults::unlessTimed(std::chrono::milliseconds patience) const {
    return m_runLoop ? kNoPatience : patience;
}

void FileUserDefaults::writeAfter(Seconds delay) {
    if (m_runLoop) {
        m_timer = m_runLoop->callAfter(delay, [this] { writeLeft(); });
    }
}

void FileUserDefaults::write(std::chrono::milliseconds patience) {
    m_waitsSince.reset();
    const auto outcome = tryToWrite(patience);
    if (outcome == Outcome::written) {
        nothingIsLeft();
        return;
    }
    for (auto& [key, change] : m_unwritten) {
        change.isNew = false;
    }
    ++m_failures;
    const auto wasTaken = outcome == Outcome::taken;
    if (wasTaken && m_failures < kTakenTooOften) {
        writeAfter(kUntilUnlocked);
        return;
    }
    setKept(false);
    const auto doublings = std::min(m_failures - (wasTaken ? kTakenTooOften : 1), kMostDoublings);
    writeAfter(std::min(kLongestWait, kUntilWritable * (1 << doublings)));
}

FileUserDefaults::Outcome FileUserDefaults::tryToWrite(std::chrono::milliseconds patience) {
    // Where there is none after this, nothing can be written either.
    static_cast<void>(base::makeFolders(m_file.parent_path(), S_IRWXU));
    const auto lock = m_locking(beside(m_file, kLockExtension), patience);
    auto found = read();
    settleChanges(found);
    const auto outcome = m_unwritten.empty()                            ? Outcome::written
                         : lock.state() == base::FileLock::State::taken ? Outcome::taken
                                                                        : replace(found);
    if (outcome != Outcome::written) {
        m_failedOn = std::make_unique<Found>(std::move(found));
    }
    return outcome;
}

FileUserDefaults::Outcome FileUserDefaults::replace(const Found& found) {
    if (found.kind == Found::Kind::unreadable ||
        (found.kind == Found::Kind::damaged && !keepDamaged(found.contents))) {
        return Outcome::failed;
    }
    if (base::replaceFile(m_file, m_settings->text())) {
        return Outcome::failed;
    }
    m_held = std::make_unique<SettingsObject>(*m_settings);
    return Outcome::written;
}

/// Under a name of its own: an earlier one may hold what the user still misses.
bool FileUserDefaults::keepDamaged(const std::string& contents) {
    if (contents == m_keptDamaged) {
        return true;
    }
    auto moment = base::isoText(base::SystemClock().now());
    std::replace(moment.begin(), moment.end(), ':', '-');
    const auto kept = beside(m_file, kDamagedExtension + ("-" + moment));
    if (base::replaceFile(kept, contents)) {
        return false;
    }
    m_keptDamaged = contents;
    if (m_log) {
        base::Logger(*m_log, kLogCategory)
            .warning("The settings file is damaged; what it held is kept in " + kept.string());
    }
    return true;
}

void FileUserDefaults::setKept(bool isKept) {
    if (isKept == m_isKept) {
        return;
    }
    m_isKept = isKept;
    if (!isKept && m_log) {
        base::Logger(*m_log, kLogCategory)
            .warning("Settings cannot be written to " + m_file.string() +
                     "; what is set holds until the program ends");
    }
    m_keptChanged.emit();
}

} // namespace korvex::app
