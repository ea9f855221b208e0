#include "store/FieldAccess.h"

#include "base/Instant.h"
#include "store/ExternalBytes.h"

#include <cassert>
#include <optional>

namespace korvex::store {

namespace {

template <typename T>
const T& as(const void* slot) {
    return *static_cast<const T*>(slot);
}

template <typename T>
T& as(void* slot) {
    return *static_cast<T*>(slot);
}

template <typename T>
Value fromOptional(const std::optional<T>& value) {
    return value ? Value(*value) : Value();
}

template <typename T>
std::optional<T> toOptional(Value&& value) {
    if (isAbsent(value)) {
        return std::nullopt;
    }
    return std::get<T>(std::move(value));
}

} // namespace

Value readSlot(const void* slot, FieldKind kind) {
    switch (kind) {
    case FieldKind::uuid:
        return as<base::Uuid>(slot);
    case FieldKind::optionalUuid:
    case FieldKind::reference:
        return fromOptional(as<std::optional<base::Uuid>>(slot));
    case FieldKind::text:
        return as<std::string>(slot);
    case FieldKind::optionalText:
        return fromOptional(as<std::optional<std::string>>(slot));
    case FieldKind::optionalBytes:
        return fromOptional(as<std::optional<base::Bytes>>(slot));
    case FieldKind::integer:
        return as<std::int64_t>(slot);
    case FieldKind::optionalInteger:
        return fromOptional(as<std::optional<std::int64_t>>(slot));
    case FieldKind::boolean:
        return std::int64_t{as<bool>(slot) ? 1 : 0};
    case FieldKind::date:
        return as<base::Instant>(slot).seconds;
    case FieldKind::optionalDate: {
        const auto& date = as<std::optional<base::Instant>>(slot);
        return date ? Value(date->seconds) : Value();
    }
    case FieldKind::externalBytes:
        return fromOptional(as<ExternalBytes>(slot).bytes);
    }
    assert(false);
    return {};
}

void writeSlot(void* slot, FieldKind kind, Value value) {
    switch (kind) {
    case FieldKind::uuid:
        as<base::Uuid>(slot) = std::get<base::Uuid>(value);
        return;
    case FieldKind::optionalUuid:
    case FieldKind::reference:
        as<std::optional<base::Uuid>>(slot) = toOptional<base::Uuid>(std::move(value));
        return;
    case FieldKind::text:
        as<std::string>(slot) = std::get<std::string>(std::move(value));
        return;
    case FieldKind::optionalText:
        as<std::optional<std::string>>(slot) = toOptional<std::string>(std::move(value));
        return;
    case FieldKind::optionalBytes:
        as<std::optional<base::Bytes>>(slot) = toOptional<base::Bytes>(std::move(value));
        return;
    case FieldKind::integer:
        as<std::int64_t>(slot) = std::get<std::int64_t>(value);
        return;
    case FieldKind::optionalInteger:
        as<std::optional<std::int64_t>>(slot) = toOptional<std::int64_t>(std::move(value));
        return;
    case FieldKind::boolean:
        as<bool>(slot) = std::get<std::int64_t>(value) != 0;
        return;
    case FieldKind::date:
        as<base::Instant>(slot).seconds = std::get<double>(value);
        return;
    case FieldKind::optionalDate: {
        const auto seconds = toOptional<double>(std::move(value));
        as<std::optional<base::Instant>>(slot) =
            seconds ? std::optional(base::Instant{*seconds}) : std::nullopt;
        return;
    }
    case FieldKind::externalBytes: {
        auto& external = as<ExternalBytes>(slot);
        external.isRead = true;
        external.bytes = toOptional<base::Bytes>(std::move(value));
        return;
    }
    }
    assert(false);
}

} // namespace korvex::store
