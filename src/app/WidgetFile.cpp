#include "app/WidgetFile.h"

#include "app/StoreLocation.h"
#include "base/FileReplacement.h"
#include "base/SmallFile.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>
#include <utility>

namespace korvex::app {

namespace {

constexpr int kFormVersion = 1;
constexpr std::size_t kMaximumBytes = 64 * 1024;

using Json = rapidjson::Value;

std::optional<int> integer(const Json& object, const char* key, int least, int most) {
    const auto member = object.FindMember(key);
    if (member == object.MemberEnd() || !member->value.IsInt()) {
        return std::nullopt;
    }
    const auto value = member->value.GetInt();
    return value >= least && value <= most ? std::optional(value) : std::nullopt;
}

/// Absent where the board is named by what is no identifier: it is not for us to choose another.
std::optional<RememberedWidget> widgetOf(const Json& json) {
    if (!json.IsObject()) {
        return std::nullopt;
    }
    RememberedWidget widget;
    if (const auto board = json.FindMember("board"); board != json.MemberEnd()) {
        const auto& name = board->value;
        widget.board = name.IsString()
                           ? base::Uuid::parse({name.GetString(), name.GetStringLength()})
                           : std::nullopt;
        if (!widget.board) {
            return std::nullopt;
        }
    }
    constexpr auto kFarthest = WidgetFile::kFarthest;
    const auto x = integer(json, "x", -kFarthest, kFarthest);
    const auto y = integer(json, "y", -kFarthest, kFarthest);
    const auto width = integer(json, "width", 1, WidgetFile::kLargest);
    const auto height = integer(json, "height", 1, WidgetFile::kLargest);
    if (x && y && width && height) {
        widget.x = *x;
        widget.y = *y;
        widget.width = *width;
        widget.height = *height;
    }
    const auto below = json.FindMember("below");
    widget.isBelow = below == json.MemberEnd() || !below->value.IsBool() || below->value.GetBool();
    return widget;
}

std::optional<std::vector<RememberedWidget>> decoded(const std::string& contents) {
    // Without recursion: a file of brackets alone must not end the program.
    constexpr auto kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag;
    rapidjson::Document json;
    json.Parse<kFlags>(contents.data(), contents.size());
    if (json.HasParseError() || !json.IsObject() ||
        integer(json, "version", kFormVersion, kFormVersion) != kFormVersion) {
        return std::nullopt;
    }
    const auto& object = std::as_const(json);
    const auto list = object.FindMember("widgets");
    if (list == object.MemberEnd() || !list->value.IsArray()) {
        return std::nullopt;
    }
    std::vector<RememberedWidget> widgets;
    for (const auto& each : list->value.GetArray()) {
        if (const auto widget = widgetOf(each);
            widget && widgets.size() < WidgetFile::kMostWidgets) {
            widgets.push_back(*widget);
        }
    }
    return widgets;
}

std::string encoded(const std::vector<RememberedWidget>& widgets) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    const auto number = [&](const char* key, int value) {
        writer.Key(key);
        writer.Int(value);
    };
    writer.StartObject();
    number("version", kFormVersion);
    writer.Key("widgets");
    writer.StartArray();
    for (const auto& widget : widgets) {
        writer.StartObject();
        if (widget.board) {
            writer.Key("board");
            writer.String(widget.board->text().c_str());
        }
        if (widget.hasPlace()) {
            number("x", widget.x);
            number("y", widget.y);
            number("width", widget.width);
            number("height", widget.height);
        }
        writer.Key("below");
        writer.Bool(widget.isBelow);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

} // namespace

std::filesystem::path WidgetFile::in(const std::filesystem::path& stateFolder,
                                     const std::filesystem::path& storeFile) {
    const auto folder = stateFolder / "korvex";
    if (isUsersOwn(storeFile.parent_path())) {
        return folder / "widgets.json";
    }
    return folder / ("widgets-" + storeMark(storeFile) + ".json");
}

std::vector<RememberedWidget> WidgetFile::read(base::LogSink& log) const {
    std::error_code missing;
    if (!std::filesystem::exists(m_file, missing)) {
        return {};
    }
    const auto contents = base::readSmallFile(m_file, kMaximumBytes);
    if (auto widgets = contents ? decoded(*contents) : std::nullopt) {
        return *std::move(widgets);
    }
    setAside(log);
    return {};
}

void WidgetFile::setAside(base::LogSink& log) const {
    const auto kept = m_file.string() + ".damaged";
    const base::Logger logger(log, "Widgets");
    if (const auto error = base::moveFile(m_file, kept)) {
        logger.warning("The file of widgets is damaged: " + error.message());
    } else {
        logger.warning("The file of widgets is damaged; what it held is kept in " + kept);
    }
}

std::error_code WidgetFile::write(const std::vector<RememberedWidget>& widgets) const {
    if (const auto error = base::makeFolders(m_file.parent_path(), 0700)) {
        return error;
    }
    return base::replaceFile(m_file, encoded(widgets));
}

} // namespace korvex::app
