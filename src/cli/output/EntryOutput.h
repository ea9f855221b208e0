#pragma once

#include "model/Entry.h"

#include <span>

namespace korvex::cli {

class Session;

/// What a command that changed entries prints: their records with --json, else nothing.
void printRecord(Session& session, const model::Entry& entry);
void printRecords(Session& session, std::span<model::Entry* const> entries);

/// What a command that made entries prints: their identifiers, or the same as the others.
void printCreated(Session& session, const model::Entry& entry);
void printCreated(Session& session, std::span<model::Entry* const> entries);

} // namespace korvex::cli
