#include "store/ModelContext.h"

#include "store/ContextCore.h"

namespace korvex::store {

ModelContext::ModelContext(ModelContainer& container)
    : m_core(std::make_unique<ContextCore>(container)) {}

ModelContext::~ModelContext() = default;

ModelContainer& ModelContext::container() const {
    return m_core->container();
}

void ModelContext::remove(Record& record) {
    m_core->remove(record);
}

bool ModelContext::hasChanges() const {
    return !m_core->pending().isEmpty();
}

std::vector<Record*> ModelContext::insertedRecords() const {
    return m_core->pending().inserted;
}

std::vector<Record*> ModelContext::deletedRecords() const {
    return m_core->pending().deleted;
}

std::vector<Record*> ModelContext::changedRecords() const {
    return m_core->pending().changed();
}

void ModelContext::save() {
    m_core->save();
}

void ModelContext::rollback() noexcept {
    m_core->rollback();
}

void ModelContext::refresh() {
    m_core->refresh();
}

void ModelContext::afterStep(std::function<void()> work) {
    m_core->afterStep(std::move(work));
}

void ModelContext::processPendingChanges() {
    m_core->processPendingChanges();
}

base::Signal<const ChangeSet&>& ModelContext::didChange() {
    return m_core->didChange;
}

void ModelContext::fetchRecords(const RecordType& type, const FetchDescriptor& descriptor,
                                const std::function<void(Record&)>& sink) {
    m_core->fetch(type, descriptor, sink);
}

void ModelContext::fetchRecordValues(const RecordType& type, const std::vector<std::size_t>& fields,
                                     const Condition& condition,
                                     const std::function<void(std::span<const Value>)>& sink) {
    m_core->fetchValues(type, fields, condition, sink);
}

void ModelContext::visitRecords(const RecordType& type, const Condition& condition,
                                const std::function<void(const Record&)>& sink) {
    m_core->visit(type, condition, sink);
}

std::size_t ModelContext::countRecords(const RecordType& type, const Condition& condition) {
    return m_core->count(type, condition);
}

Record* ModelContext::findRecord(const RecordType& type, const base::Uuid& id) {
    return m_core->find(type, id);
}

Record* ModelContext::storedRecord(const Record& record) {
    return m_core->stored(record);
}

void ModelContext::insertRecord(std::unique_ptr<Record> record) {
    m_core->insert(std::move(record));
}

struct ReadingStep::Scope {
    StoreConnection::ReadScope scope;
};

ReadingStep::ReadingStep(ModelContainer& container)
    : m_scope(new Scope{StoreConnection::ReadScope(container.connection())}) {}

ReadingStep::~ReadingStep() = default;

LockedStep::LockedStep(ModelContext& context) : m_context(context) {
    m_context.core().beginStep();
}

LockedStep::~LockedStep() {
    m_context.core().endStep();
}

} // namespace korvex::store
