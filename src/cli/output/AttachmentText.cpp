#include "cli/output/AttachmentText.h"

#include "cli/output/Json.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include "base/ByteSize.h"

#include <algorithm>

namespace korvex::cli {

std::string attachmentMark(const services::AttachmentList& list) {
    if (list.isDamaged) {
        return "+unreadable files";
    }
    const auto count = list.attachments.size();
    return count == 0 ? "" : count == 1 ? "+1 file" : "+" + std::to_string(count) + " files";
}

void printAttachments(Session& session, const services::AttachmentList& list) {
    constexpr std::size_t kGap = 2;
    std::vector<base::Uuid> ids;
    std::size_t sizeWidth = 0;
    for (const auto& each : list.attachments) {
        ids.push_back(each.id);
        sizeWidth = std::max(sizeWidth, base::sizeText(each.size).size());
    }
    const auto idWidth = shortIdentifierLength(ids);
    auto& output = session.output();
    for (const auto& each : list.attachments) {
        const auto size = base::sizeText(each.size);
        output.write(each.id.text().substr(0, idWidth));
        output.spaces(kGap + sizeWidth - size.size());
        output.write(size);
        output.spaces(kGap);
        output.write(onOneLine(each.filename));
        output.put('\n');
    }
}

void writeAttachments(Json& json, const services::AttachmentList& list) {
    if (list.isDamaged) {
        json.null();
        return;
    }
    json.beginArray();
    for (const auto& each : list.attachments) {
        json.beginObject();
        json.member("id", std::string_view(each.id.text()));
        json.member("filename", std::string_view(each.filename));
        json.member("size", static_cast<std::int64_t>(each.size));
        json.endObject();
    }
    json.endArray();
}

} // namespace korvex::cli
