#include "ui/kit/lists/RowDrag.h"

#include <QDropEvent>
#include <QPainter>

#include <algorithm>

namespace korvex::ui {

QMimeData* rowDrag(const char* type, const base::Uuid& id) {
    auto* const payload = new QMimeData;
    payload->setData(QString::fromLatin1(type), QByteArray::fromStdString(id.text()));
    return payload;
}

bool isRowDrag(const QMimeData& data, const char* type) {
    return data.hasFormat(QString::fromLatin1(type));
}

std::optional<base::Uuid> draggedRow(const QMimeData& data, const char* type) {
    return base::Uuid::parse(data.data(QString::fromLatin1(type)).toStdString());
}

bool acceptAsCopy(QDropEvent& event) {
    for (const auto action : {Qt::CopyAction, Qt::LinkAction}) {
        if (event.possibleActions().testFlag(action)) {
            event.setDropAction(action);
            event.accept();
            return true;
        }
    }
    event.ignore();
    return false;
}

void paintDropLine(QPainter& painter, const QRect& row, Qt::Edge edge, int margin,
                   const Theme& theme) {
    const auto y = edge == Qt::TopEdge ? row.top() : row.bottom() + 1;
    const auto width = theme.space(Space::hair);
    painter.fillRect(
        QRect(row.left() + margin, std::max(y - width / 2, 0), row.width() - 2 * margin, width),
        theme.colors().accent);
}

} // namespace korvex::ui
