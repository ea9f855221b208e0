#include "base/Digest.h"
#include "store/ModelContainer.h"
#include "store/OlderTable.h"
#include "store/StoreConnection.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <set>

namespace korvex::store {

namespace {

/// More of the same says nothing new.
constexpr std::size_t kMaximumProblems = 100;

class Check {
public:
    using Advance = std::function<void(std::size_t)>;

    Check(StoreConnection& connection, const Schema& schema, const Advance& advance)
        : m_connection(connection), m_schema(schema), m_advance(advance) {}

    StoreCheckReport run() {
        structure();
        for (std::size_t index = 0; index < m_schema.types.size(); ++index) {
            records(index);
        }
        return std::move(m_report);
    }

private:
    void problem(std::string sentence) {
        if (m_report.problems.size() < kMaximumProblems) {
            m_report.problems.push_back(std::move(sentence));
        }
    }

    void damage(std::string sentence) {
        m_report.isDamaged = true;
        problem(std::move(sentence));
    }

    void structure() {
        Statement check(m_connection.handle(), "PRAGMA integrity_check(20)");
        while (check.step()) {
            if (check.text(0) != "ok") {
                damage("Structure: " + std::string(check.text(0)));
            }
        }
        if (!hasTables(m_connection.handle(), olderTables(m_schema, m_schema.version.number))) {
            damage("Structure: a table lacks a column.");
        }
    }

    void records(std::size_t index) {
        const auto& type = *m_schema.types[index];
        auto& statements = m_connection.statements(index);
        try {
            Statement rows(m_connection.handle(), tableSql::select(type));
            const auto scratch = type.make();
            auto& identifiers = m_identifiers.emplace_back();
            while (rows.step()) {
                statements.codec.readRow(rows, *scratch);
                ++m_report.recordCount;
                if (m_advance) {
                    m_advance(1);
                }
                if (!rows.isIdentifier(tableSql::kFirstFieldColumn)) {
                    damage(std::string(type.name) + " row " +
                           std::to_string(rows.integer(tableSql::kRowidColumn)) +
                           " has no identifier.");
                    continue;
                }
                identifiers.insert(scratch->id());
                const auto name = std::string(type.name) + " " + scratch->id().text();
                if (statements.codec.checksum(*scratch) !=
                    static_cast<std::uint64_t>(rows.integer(tableSql::kChecksumColumn))) {
                    damage(name + " differs from its checksum.");
                }
                owner(type, *scratch, name);
            }
            externals(type);
        } catch (const StoreError& error) {
            if (!isDamage(error)) {
                throw;
            }
            damage(std::string(type.name) + ": " + error.what());
        }
    }

    void owner(const RecordType& type, const Record& record, const std::string& name) {
        if (!type.ownerField) {
            return;
        }
        const auto reference = record.value(*type.ownerField);
        if (isAbsent(reference)) {
            problem(name + " belongs to nothing.");
            return;
        }
        for (std::size_t i = 0; i < m_identifiers.size(); ++i) {
            if (m_schema.types[i] == &type.ownerType() &&
                !m_identifiers[i].contains(std::get<base::Uuid>(reference))) {
                problem(name + " belongs to something that is not there.");
            }
        }
    }

    void externals(const RecordType& type) {
        for (const auto& field : type.fields) {
            if (field.kind != FieldKind::externalBytes) {
                continue;
            }
            Statement rows(m_connection.handle(), "SELECT owner, checksum, bytes FROM " +
                                                      tableSql::externalTable(type, field));
            while (rows.step()) {
                if (base::checksum(rows.bytes(2)) != static_cast<std::uint64_t>(rows.integer(1))) {
                    damage(std::string(type.name) + " row " + std::to_string(rows.integer(0)) +
                           ": " + std::string(field.name) + " differs from its checksum.");
                }
            }
        }
    }

    StoreConnection& m_connection;
    const Schema& m_schema;
    const Advance& m_advance;
    StoreCheckReport m_report;
    /// These are the identifiers that the store holds, for each type of the schema.
    std::vector<std::set<base::Uuid>> m_identifiers;
};

} // namespace

StoreCheckReport
ModelContainer::check(const std::function<void(std::size_t records)>& advance) const {
    try {
        const StoreConnection::ReadScope scope(*m_connection);
        return Check(*m_connection, m_schema, advance).run();
    } catch (const StoreError& error) {
        if (!isDamage(error)) {
            throw;
        }
        return {.isDamaged = true, .problems = {error.what()}};
    }
}

} // namespace korvex::store
