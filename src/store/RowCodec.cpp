#include "store/RowCodec.h"

#include "base/Digest.h"
#include "base/Instant.h"
#include "store/ChecksumForm.h"
#include "store/TableSql.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

namespace korvex::store {

namespace {

template <typename T>
T& as(void* slot) {
    return *static_cast<T*>(slot);
}

void readSlotFrom(const Statement& row, int column, FieldKind kind, void* slot) {
    switch (kind) {
    case FieldKind::uuid:
        as<base::Uuid>(slot) = row.uuid(column);
        return;
    case FieldKind::optionalUuid:
    case FieldKind::reference:
        as<std::optional<base::Uuid>>(slot) =
            row.isAbsent(column) ? std::nullopt : std::optional(row.uuid(column));
        return;
    case FieldKind::text:
        as<std::string>(slot).assign(row.text(column));
        return;
    case FieldKind::optionalText:
        as<std::optional<std::string>>(slot) =
            row.isAbsent(column) ? std::nullopt : std::optional(std::string(row.text(column)));
        return;
    case FieldKind::optionalBytes: {
        auto& target = as<std::optional<base::Bytes>>(slot);
        if (row.isAbsent(column)) {
            target.reset();
            return;
        }
        const auto bytes = row.bytes(column);
        target.emplace(bytes.begin(), bytes.end());
        return;
    }
    case FieldKind::integer:
        as<std::int64_t>(slot) = row.integer(column);
        return;
    case FieldKind::optionalInteger:
        as<std::optional<std::int64_t>>(slot) =
            row.isAbsent(column) ? std::nullopt : std::optional(row.integer(column));
        return;
    case FieldKind::boolean:
        as<bool>(slot) = row.integer(column) != 0;
        return;
    case FieldKind::date:
        as<base::Instant>(slot).seconds = row.real(column);
        return;
    case FieldKind::optionalDate:
        as<std::optional<base::Instant>>(slot) =
            row.isAbsent(column) ? std::nullopt : std::optional(base::Instant{row.real(column)});
        return;
    case FieldKind::externalBytes:
        break;
    }
    assert(false);
}

void appendSeconds(ChecksumForm& form, double seconds) {
    // Minus zero is zero to SQLite.
    form.number(std::bit_cast<std::uint64_t>(seconds == 0 ? 0.0 : seconds));
}

void appendSlot(ChecksumForm& form, FieldKind kind, void* slot) {
    const auto appendUuid = [&](const base::Uuid& id) {
        form.bytes(id.bytes.data(), id.bytes.size());
    };
    const auto appendText = [&](const auto& text) { form.bytes(text.data(), text.size()); };
    const auto appendInteger = [&](std::int64_t value) {
        form.number(static_cast<std::uint64_t>(value));
    };
    const auto appendDate = [&](base::Instant instant) { appendSeconds(form, instant.seconds); };
    switch (kind) {
    case FieldKind::uuid:
        return appendUuid(as<base::Uuid>(slot));
    case FieldKind::optionalUuid:
    case FieldKind::reference:
        return form.optional(as<std::optional<base::Uuid>>(slot), appendUuid);
    case FieldKind::text:
        return appendText(as<std::string>(slot));
    case FieldKind::optionalText:
        return form.optional(as<std::optional<std::string>>(slot), appendText);
    case FieldKind::optionalBytes:
        return form.optional(as<std::optional<base::Bytes>>(slot), appendText);
    case FieldKind::integer:
        return appendInteger(as<std::int64_t>(slot));
    case FieldKind::optionalInteger:
        return form.optional(as<std::optional<std::int64_t>>(slot), appendInteger);
    case FieldKind::boolean:
        return appendInteger(as<bool>(slot) ? 1 : 0);
    case FieldKind::date:
        return appendDate(as<base::Instant>(slot));
    case FieldKind::optionalDate:
        return form.optional(as<std::optional<base::Instant>>(slot), appendDate);
    case FieldKind::externalBytes:
        break;
    }
    assert(false);
}

void appendValue(ChecksumForm& form, const Value& value) {
    struct Append {
        ChecksumForm& form;
        void operator()(std::monostate) const { form.absent(); }
        void operator()(std::int64_t number) const {
            form.number(static_cast<std::uint64_t>(number));
        }
        void operator()(double seconds) const { appendSeconds(form, seconds); }
        void operator()(const std::string& text) const { form.bytes(text.data(), text.size()); }
        void operator()(const base::Bytes& bytes) const { form.bytes(bytes.data(), bytes.size()); }
        void operator()(const base::Uuid& id) const {
            form.bytes(id.bytes.data(), id.bytes.size());
        }
    };
    std::visit(Append{form}, value);
}

} // namespace

RowCodec::RowCodec(const RecordType& type)
    : m_type(&type), m_columnOfField(type.fields.size(), -1) {
    auto column = tableSql::kFirstFieldColumn;
    for (const auto field : tableSql::rowFields(type)) {
        m_columns.push_back({field, type.fields[field].kind, column});
        m_columnOfField[field] = column;
        ++column;
    }
    for (std::size_t i = 0; i < type.fields.size(); ++i) {
        if (type.fields[i].kind == FieldKind::externalBytes) {
            m_externals.push_back({i, FieldKind::externalBytes, column});
            ++column;
        }
    }
}

void RowCodec::readRow(const Statement& row, Record& record) const {
    for (const auto& each : m_columns) {
        readSlotFrom(row, each.column, each.kind, record.slot(each.field));
    }
    for (const auto& each : m_externals) {
        const auto isAbsent = row.integer(each.column) == 0;
        as<ExternalBytes>(record.slot(each.field)) = {.isRead = isAbsent, .bytes = std::nullopt};
    }
}

Value RowCodec::readField(const Statement& row, std::size_t field) const {
    const auto column = m_columnOfField[field];
    assert(column >= 0);
    return row.value(column, m_type->fields[field].kind);
}

std::int64_t RowCodec::version(const Statement& row) const {
    return row.integer(tableSql::kVersionColumn);
}

std::int64_t RowCodec::rowid(const Statement& row) const {
    return row.integer(tableSql::kRowidColumn);
}

std::uint64_t RowCodec::checksum(const Statement& row) const {
    return static_cast<std::uint64_t>(row.integer(tableSql::kChecksumColumn));
}

base::Uuid RowCodec::identifier(const Statement& row) const {
    return row.uuid(tableSql::kFirstFieldColumn);
}

void RowCodec::bindField(Statement& statement, int index, const Record& record,
                         std::size_t field) const {
    auto* slot = record.slot(field);
    const auto bindText = [&](const std::string& text) {
        statement.bind(index, std::string_view(text));
    };
    const auto bindOptional = [&](const auto& value, auto&& bind) {
        if (value) {
            bind(*value);
        } else {
            statement.bindAbsent(index);
        }
    };
    const auto bindPlain = [&](const auto& value) { statement.bind(index, value); };
    switch (m_type->fields[field].kind) {
    case FieldKind::uuid:
        return statement.bind(index, as<base::Uuid>(slot));
    case FieldKind::optionalUuid:
    case FieldKind::reference:
        return bindOptional(as<std::optional<base::Uuid>>(slot), bindPlain);
    case FieldKind::text:
        return bindText(as<std::string>(slot));
    case FieldKind::optionalText:
        return bindOptional(as<std::optional<std::string>>(slot), bindText);
    case FieldKind::optionalBytes:
        return bindOptional(as<std::optional<base::Bytes>>(slot), [&](const base::Bytes& bytes) {
            statement.bind(index, std::span<const std::uint8_t>(bytes));
        });
    case FieldKind::integer:
        return statement.bind(index, as<std::int64_t>(slot));
    case FieldKind::optionalInteger:
        return bindOptional(as<std::optional<std::int64_t>>(slot), bindPlain);
    case FieldKind::boolean:
        return statement.bind(index, std::int64_t{as<bool>(slot) ? 1 : 0});
    case FieldKind::date:
        return statement.bind(index, as<base::Instant>(slot).seconds);
    case FieldKind::optionalDate:
        return bindOptional(as<std::optional<base::Instant>>(slot),
                            [&](base::Instant instant) { statement.bind(index, instant.seconds); });
    case FieldKind::externalBytes:
        break;
    }
    assert(false);
}

void RowCodec::bindRow(Statement& statement, const Record& record, std::int64_t version) const {
    statement.bind(0, version);
    statement.bind(1, static_cast<std::int64_t>(checksum(record)));
    int index = 2;
    for (const auto& each : m_columns) {
        bindField(statement, index, record, each.field);
        ++index;
    }
}

template <typename Append>
std::uint64_t RowCodec::checksumOf(Append&& append) const {
    m_scratch.clear();
    ChecksumForm form(m_scratch);
    form.bytes(m_type->name.data(), m_type->name.size());
    for (const auto& each : m_columns) {
        append(form, each);
    }
    return base::checksum(m_scratch);
}

std::uint64_t RowCodec::checksum(const Record& record) const {
    return checksumOf([&](ChecksumForm& form, const Column& each) {
        appendSlot(form, each.kind, record.slot(each.field));
    });
}

std::uint64_t RowCodec::originalChecksum(const Record& record) const {
    const auto& originals = record.state().originals;
    return checksumOf([&](ChecksumForm& form, const Column& each) {
        const auto original =
            std::find_if(originals.begin(), originals.end(),
                         [&](const auto& value) { return value.field == each.field; });
        if (original == originals.end()) {
            appendSlot(form, each.kind, record.slot(each.field));
        } else {
            appendValue(form, original->value);
        }
    });
}

} // namespace korvex::store
