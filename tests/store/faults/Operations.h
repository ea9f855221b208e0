#pragma once

#include "store/faults/FaultProgram.h"

#include <filesystem>
#include <map>
#include <string>

namespace korvex::faults {

// What the driver can do, by the names that the tests call it by.

/// Done to an open store. Throws what a service throws.
using Operation = void (*)(Program&);
using Operations = std::map<std::string, Operation>;

/// Changes of boards and entries, as a user makes them one at a time.
const Operations& entryOperations();
/// Export, import and taking that back, and automatic backups.
const Operations& backupOperations();

/// Done to a file that is opened for it, if at all: starts, upgrades, repairs, and stores to start
/// from. Doing one again does what is left of it.
using FileOperation = void (*)(const std::filesystem::path& file, Steps& steps);
using FileOperations = std::map<std::string, FileOperation>;

/// What a program does with the whole store before anything else.
const FileOperations& startOperations();
/// Stores for the operations to start from.
const FileOperations& preparations();

} // namespace korvex::faults
