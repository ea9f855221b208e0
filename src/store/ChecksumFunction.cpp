#include "store/ChecksumFunction.h"

#include "base/Digest.h"
#include "base/Uuid.h"
#include "store/ChecksumForm.h"
#include "store/Statement.h"

#include <bit>
#include <cassert>
#include <memory>
#include <new>

namespace korvex::store {

namespace {

struct Row {
    std::string type;
    std::vector<FieldKind> kinds;
    std::vector<std::uint8_t> scratch;
};

/// A text, too: asked for as one it would be copied to get a zero at its end.
void appendBytes(ChecksumForm& form, sqlite3_value* value) {
    const auto* data = sqlite3_value_blob(value);
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
    form.bytes(data ? data : "", data ? size : 0);
}

/// What is no identifier reads as the nil one, as everywhere.
void appendUuid(ChecksumForm& form, sqlite3_value* value) {
    constexpr base::Uuid kNil;
    const auto* data = sqlite3_value_blob(value);
    const auto isUuid = sqlite3_value_bytes(value) == static_cast<int>(kNil.bytes.size());
    form.bytes(isUuid && data ? data : kNil.bytes.data(), kNil.bytes.size());
}

void append(ChecksumForm& form, FieldKind kind, sqlite3_value* value) {
    const auto isAbsent = sqlite3_value_type(value) == SQLITE_NULL;
    switch (kind) {
    case FieldKind::optionalUuid:
    case FieldKind::reference:
        if (isAbsent) {
            return form.absent();
        }
        [[fallthrough]];
    case FieldKind::uuid:
        return appendUuid(form, value);
    case FieldKind::optionalText:
        if (isAbsent) {
            return form.absent();
        }
        [[fallthrough]];
    case FieldKind::text:
        return appendBytes(form, value);
    case FieldKind::optionalBytes:
        return isAbsent ? form.absent() : appendBytes(form, value);
    case FieldKind::optionalInteger:
        if (isAbsent) {
            return form.absent();
        }
        [[fallthrough]];
    case FieldKind::integer:
        return form.number(static_cast<std::uint64_t>(sqlite3_value_int64(value)));
    case FieldKind::boolean:
        return form.number(sqlite3_value_int64(value) != 0 ? 1 : 0);
    case FieldKind::optionalDate:
        if (isAbsent) {
            return form.absent();
        }
        [[fallthrough]];
    case FieldKind::date: {
        const auto seconds = sqlite3_value_double(value);
        return form.number(std::bit_cast<std::uint64_t>(seconds == 0 ? 0.0 : seconds));
    }
    case FieldKind::externalBytes:
        break;
    }
    assert(false);
}

void checksumOfRow(sqlite3_context* context, int count, sqlite3_value** values) {
    auto& row = *static_cast<Row*>(sqlite3_user_data(context));
    try {
        row.scratch.clear();
        ChecksumForm form(row.scratch);
        form.bytes(row.type.data(), row.type.size());
        for (int i = 0; i < count; ++i) {
            append(form, row.kinds[static_cast<std::size_t>(i)], values[i]);
        }
        sqlite3_result_int64(context, static_cast<sqlite3_int64>(base::checksum(row.scratch)));
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

} // namespace

void addChecksumFunction(sqlite3* database, const std::string& name, std::string_view type,
                         const std::vector<StoredField>& fields) {
    auto row = std::make_unique<Row>();
    row->type = type;
    for (const auto& field : fields) {
        row->kinds.push_back(field.kind);
    }
    // SQLite deletes the row, also when it refuses the function.
    const auto code = sqlite3_create_function_v2(
        database, name.c_str(), static_cast<int>(fields.size()),
        SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, row.release(), checksumOfRow,
        nullptr, nullptr, [](void* pointer) { delete static_cast<Row*>(pointer); });
    if (code != SQLITE_OK) {
        throwSqliteError(database, code);
    }
}

} // namespace korvex::store
