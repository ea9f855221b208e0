#include "store/ModelContainer.h"

#include "store/StoreConnection.h"
#include "store/StoreError.h"

#include <utility>

namespace korvex::store {

ModelContainer::ModelContainer(const Schema& schema, ModelConfiguration configuration)
    : m_schema(schema), m_configuration(std::move(configuration)) {}

ModelContainer::~ModelContainer() = default;

std::unique_ptr<ModelContainer>
ModelContainer::open(const Schema& schema, ModelConfiguration configuration, base::LogSink& log) {
    std::unique_ptr<ModelContainer> container(new ModelContainer(schema, std::move(configuration)));
    container->m_connection =
        std::make_unique<StoreConnection>(container->m_schema, container->m_configuration, log);
    return container;
}

bool ModelContainer::allowsSave() const {
    return m_connection->allowsSave();
}

const base::Uuid& ModelContainer::storeID() const {
    return m_connection->storeID();
}

const std::vector<std::string>& ModelContainer::notices() const {
    return m_connection->notices();
}

bool ModelContainer::wasUpgraded() const {
    return m_connection->wasUpgraded();
}

bool ModelContainer::isFromElsewhere() const {
    return m_connection->isFromElsewhere();
}

void ModelContainer::adopt() {
    m_connection->adopt();
}

std::int64_t ModelContainer::revision() const {
    return m_connection->revision();
}

std::optional<std::string> ModelContainer::replacementNote() const {
    auto last = ChangeLog::lastReplacement(m_connection->handle());
    return last ? std::optional(std::move(last->note)) : std::nullopt;
}

void ModelContainer::setPatience(std::chrono::milliseconds patience) {
    m_connection->setPatience(patience);
}

std::chrono::milliseconds ModelContainer::patience() const {
    return m_connection->patience();
}

void ModelContainer::checkpoint() {
    m_connection->checkpoint();
}

void ModelContainer::shortenJournal() noexcept {
    m_connection->shortenJournal();
}

} // namespace korvex::store
