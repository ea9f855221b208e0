#pragma once

#include "cli/output/DueLabels.h"
#include "cli/terminal/Output.h"
#include "model/Board.h"
#include "model/Entry.h"

#include <rapidjson/writer.h>

#include <span>
#include <string_view>

namespace korvex::cli {

/// An `Output` as RapidJSON wants it.
class JsonStream {
public:
    using Ch = char;

    explicit JsonStream(Output& output) : m_output(output) {}
    void Put(char character) { m_output.put(character); }
    void Flush() {}

private:
    Output& m_output;
};

/// Writes one JSON document straight to the output; its line ends with the writer.
class Json {
public:
    explicit Json(Output& output) : m_output(output), m_stream(output), m_writer(m_stream) {}
    ~Json() { m_output.put('\n'); }
    Json(const Json&) = delete;
    Json& operator=(const Json&) = delete;

    void beginArray() { m_writer.StartArray(); }
    void endArray() { m_writer.EndArray(); }
    void beginObject() { m_writer.StartObject(); }
    void endObject() { m_writer.EndObject(); }

    void key(std::string_view name);
    void text(std::string_view value);
    void integer(std::int64_t value) { m_writer.Int64(value); }
    void number(double value) { m_writer.Double(value); }
    void null() { m_writer.Null(); }

    /// The stored fields under their names; absent ones are left out.
    void board(const model::Board& board);
    /// The same, with its board's identifier as `boardID`, its due label as `dueLabel` and its
    /// `attachments` (may throw).
    void entry(const model::Entry& entry, DueLabels& labels);
    /// The members of that object alone.
    void entryMembers(const model::Entry& entry, DueLabels& labels);
    void boards(std::span<model::Board* const> boards);
    void entries(std::span<model::Entry* const> entries, DueLabels& labels);

    void member(std::string_view name, std::string_view value);
    void member(std::string_view name, std::int64_t value);
    void member(std::string_view name, double value);
    void flag(std::string_view name, bool value);

private:
    void member(std::string_view name, const base::Uuid& value);
    void member(std::string_view name, base::Instant value);
    template <typename T>
    void member(std::string_view name, const std::optional<T>& value) {
        if (value) {
            member(name, *value);
        }
    }

    Output& m_output;
    JsonStream m_stream;
    rapidjson::Writer<JsonStream> m_writer;
};

} // namespace korvex::cli
