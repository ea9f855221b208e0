#include "cli/output/AttachmentText.h"

#include "cli/output/Json.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"
#include "cli/terminal/DisplayText.h"

#include <algorithm>

namespace korvex::cli {

std::string sizeText(std::size_t bytes) {
    constexpr std::size_t kStep = 1024;
    if (bytes < kStep) {
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    }
    if (bytes < kStep * kStep) {
        return std::to_string(bytes / kStep) + " KB";
    }
    // In tenths, cut and not rounded: what fits is never shown as what does not.
    const auto tenths = bytes * 10 / (kStep * kStep);
    const auto fraction = tenths % 10 == 0 ? "" : "." + std::to_string(tenths % 10);
    return std::to_string(tenths / 10) + fraction + " MB";
}

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
        sizeWidth = std::max(sizeWidth, sizeText(each.size).size());
    }
    const auto idWidth = shortIdentifierLength(ids);
    auto& output = session.output();
    for (const auto& each : list.attachments) {
        const auto size = sizeText(each.size);
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
