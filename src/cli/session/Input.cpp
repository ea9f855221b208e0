#include "cli/session/Input.h"

#include "cli/session/Session.h"
#include "cli/terminal/CommandLineError.h"

#include "base/FileDescriptor.h"
#include "base/Text.h"
#include "model/EntryContentLimit.h"
#include "model/ServiceErrors.h"
#include "richtext/stored/RichTextSerializer.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace korvex::cli {

namespace {

/// More than an entry takes, with the line break that may end it.
constexpr std::size_t kMoreThanAnEntry = model::EntryContentLimit::kMaximumBytes + 3;

[[noreturn]] void refuseUnreadable(const std::string& name) {
    const std::string reason = std::strerror(errno);
    throw refusal(name + " could not be read: " + reason + ".");
}

/// Reads up to the end, or to the first bytes after `maximum`. `Bytes` is a string or a vector.
template <typename Bytes>
Bytes readUpTo(std::size_t maximum, int descriptor, const std::string& name) {
    constexpr std::size_t kChunkBytes = 64 * 1024;
    Bytes bytes;
    while (bytes.size() <= maximum) {
        const auto used = bytes.size();
        bytes.resize(used + kChunkBytes);
        const auto count = ::read(descriptor, bytes.data() + used, kChunkBytes);
        if (count < 0 && errno != EINTR) {
            refuseUnreadable(name);
        }
        bytes.resize(used + static_cast<std::size_t>(count > 0 ? count : 0));
        if (count == 0) {
            break;
        }
    }
    return bytes;
}

} // namespace

std::string readAll(int descriptor) {
    auto text = readUpTo<std::string>(kMaximumInputBytes, descriptor, "Standard input");
    if (text.size() > kMaximumInputBytes) {
        throw refusal("Standard input may hold up to 64 MiB. Nothing was added.");
    }
    return text;
}

std::string readText(int descriptor) {
    auto text = readUpTo<std::string>(kMoreThanAnEntry, descriptor, "Standard input");
    if (text.size() > kMoreThanAnEntry) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::contentTooLong);
    }
    if (!base::isValidUtf8(text)) {
        throw refusal("Standard input is not valid UTF-8 text.");
    }
    for (const auto lineBreak : {'\n', '\r'}) {
        if (text.ends_with(lineBreak)) {
            text.pop_back();
        }
    }
    return text;
}

base::Bytes readFormattedText(const std::string& file) {
    const base::FileDescriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!open.isOpen()) {
        refuseUnreadable(file);
    }
    return readUpTo<base::Bytes>(kMoreThanAnEntry, open.get(), file);
}

std::vector<model::EntryAttachment> readFiles(const Session& session,
                                              std::span<const std::filesystem::path> files) {
    std::vector<model::EntryAttachment> attachments;
    for (const auto& file : files) {
        if (attachments.size() == model::EntryAttachment::kMaximumCount) {
            throw model::AttachmentError(model::AttachmentErrorCase::tooLarge);
        }
        try {
            attachments.push_back(services::readAttachment(file));
        } catch (const model::AttachmentError& error) {
            if (error.which() == model::AttachmentErrorCase::invalidFile &&
                ::access(file.c_str(), R_OK) != 0) {
                refuseUnreadable(file.string());
            }
            if (files.size() > 1) {
                session.remark(file.string() + " cannot be attached.");
            }
            throw;
        }
    }
    return attachments;
}

richtext::AttributedString plainText(std::string_view typed) {
    std::string text;
    text.reserve(typed.size());
    for (std::size_t i = 0; i < typed.size(); ++i) {
        if (typed[i] != '\r') {
            text.push_back(typed[i]);
        } else if (typed.substr(i + 1, 1) != "\n") {
            text.push_back('\n');
        }
    }
    return richtext::RichTextSerializer::plainRichText(text);
}

std::string oneLine(std::string_view typed) {
    std::string line;
    base::forEachLine(typed, [&line](std::string_view each) {
        line += line.empty() ? "" : " ";
        line += each;
    });
    return line;
}

} // namespace korvex::cli
