// Any bytes as the stored attachments of an entry: they are refused, or are a list that an entry
// may hold and that is stored and read again as the same.

#include "fuzz/Fuzzing.h"
#include "model/EntryAttachment.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using korvex::model::AttachmentError;
using korvex::model::AttachmentErrorCase;
using korvex::model::EntryAttachment;
using korvex::tests::require;

void check(const std::vector<EntryAttachment>& attachments) {
    try {
        EntryAttachment::validate(attachments);
        require(EntryAttachment::decode(EntryAttachment::encode(attachments)) == attachments,
                "stored attachments were read as others");
    } catch (const AttachmentError& error) {
        std::fprintf(stderr, "attachments that were read were refused: %s\n", error.what());
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<EntryAttachment> attachments;
    try {
        attachments = EntryAttachment::decode(std::span(data, size));
    } catch (const AttachmentError& error) {
        require(error.which() == AttachmentErrorCase::invalidData, "refused for another reason");
        return 0;
    }
    check(attachments);
    return 0;
}
