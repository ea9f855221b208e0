#include "services/AttachmentFiles.h"
#include "services/TemporaryAttachmentCopies.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace korvex::tests {

using model::AttachmentError;
using model::AttachmentErrorCase;
using model::EntryAttachment;
using services::readAttachment;
using services::readAttachments;
using services::saveAttachment;
using services::TemporaryAttachmentCopies;

namespace {

namespace fs = std::filesystem;

void write(const fs::path& file, std::string_view text) {
    std::ofstream(file, std::ios::binary) << text;
}

void writeSparse(const fs::path& file, std::size_t size) {
    write(file, "x");
    fs::resize_file(file, size);
}

std::string contents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

EntryAttachment attachment(std::string filename, std::string_view text = "text") {
    return {.id = base::Uuid::random(),
            .filename = std::move(filename),
            .data = {text.begin(), text.end()}};
}

std::optional<AttachmentErrorCase> refusalOf(const fs::path& file) {
    try {
        readAttachment(file);
    } catch (const AttachmentError& error) {
        return error.which();
    }
    return std::nullopt;
}

std::size_t filesIn(const fs::path& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

mode_t permissionsOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// A size that no file may grow beyond: what a full disk does, for this process.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes) {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{.rlim_cur = bytes, .rlim_max = m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    rlimit m_before{};
};

} // namespace

class AttachmentFilesTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
};

TEST_F(AttachmentFilesTest, ReadsARegularFileUnderAFreshIdentifier) {
    write(folder / "Plan 世界.pdf", "content");
    write(folder / "empty", "");
    const auto first = readAttachment(folder / "Plan 世界.pdf");
    const auto again = readAttachment(folder / "Plan 世界.pdf");
    EXPECT_EQ(first.filename, "Plan 世界.pdf");
    EXPECT_EQ(std::string(first.data.begin(), first.data.end()), "content");
    EXPECT_EQ(again.data, first.data);
    EXPECT_NE(again.id, first.id);
    EXPECT_TRUE(readAttachment(folder / "empty").data.empty());
}

TEST_F(AttachmentFilesTest, RefusesWhatIsNoRegularFileAndNeverWaitsForIt) {
    fs::create_directory(folder / "folder");
    write(folder / "file", "x");
    fs::create_symlink(folder / "file", folder / "link");
    fs::create_symlink(folder / "folder", folder / "folder-link");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (folder / "socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    write(folder / "a:b", "x");
    write(folder / "a\\b", "x");
    write(folder / "\xFF", "x");
    for (const fs::path& file :
         {folder / "folder", folder / "link", folder / "folder-link", folder / "pipe",
          folder / "socket", fs::path("/dev/null"), fs::path("/dev/zero"),
          // They say that they are regular, but hold more or less than they say.
          fs::path("/proc/self/status"), fs::path("/sys/devices/system/cpu/online"),
          folder / "missing", folder / "a:b", folder / "a\\b", folder / "\xFF", folder / ".",
          folder / "folder" / "..", folder / "file/", fs::path(),
          fs::path(std::string(folder / "file") + std::string("\0", 1)),
          folder / std::string(300, 'x')}) {
        EXPECT_EQ(refusalOf(file), AttachmentErrorCase::invalidFile) << file;
    }
    ::close(socket);
    // Through a linked folder the file is still the user's choice.
    write(folder / "folder" / "inside", "x");
    EXPECT_EQ(refusalOf(folder / "folder-link" / "inside"), std::nullopt);
}

TEST_F(AttachmentFilesTest, TheLimitIsTheLastByteThatIsRead) {
    writeSparse(folder / "full", EntryAttachment::kMaximumBytes);
    writeSparse(folder / "more", EntryAttachment::kMaximumBytes + 1);
    writeSparse(folder / "huge", std::size_t{1} << 40U);
    EXPECT_EQ(readAttachment(folder / "full").data.size(), EntryAttachment::kMaximumBytes);
    EXPECT_EQ(refusalOf(folder / "more"), AttachmentErrorCase::tooLarge);
    EXPECT_EQ(refusalOf(folder / "huge"), AttachmentErrorCase::tooLarge);

    const std::vector<fs::path> three(3, folder / "full");
    EXPECT_EQ(readAttachments(three).size(), 3U);
    const std::vector<fs::path> four(4, folder / "full");
    EXPECT_THROW(readAttachments(four), AttachmentError);
}

TEST_F(AttachmentFilesTest, AFileThatIsWrittenMeanwhileIsReadAsItWasOrRefused) {
    const auto file = folder / "changing";
    const std::string piece(100'000, 'x');
    write(file, piece);
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        std::ofstream stream(file, std::ios::binary | std::ios::app);
        for (int i = 1; !isOver; ++i) {
            stream << piece << std::flush;
            if (i % 50 == 0) {
                fs::resize_file(file, piece.size());
            }
        }
    });
    int refused = 0;
    for (int i = 0; i < 50 || (refused == 0 && i < 2000); ++i) {
        try {
            const auto read = readAttachment(file);
            ASSERT_GT(read.data.size(), 0U);
            ASSERT_EQ(std::count(read.data.begin(), read.data.end(), 'x'),
                      static_cast<std::ptrdiff_t>(read.data.size()));
        } catch (const AttachmentError& error) {
            ASSERT_EQ(error.which(), AttachmentErrorCase::invalidFile);
            ++refused;
        }
    }
    isOver = true;
    writer.join();
    EXPECT_GT(refused, 0);
    EXPECT_EQ(refusalOf(file), std::nullopt);
}

TEST_F(AttachmentFilesTest, SavesUnderAFreeName) {
    const auto target = folder / "target";
    fs::create_directory(target);
    for (const auto& [filename, expected] : std::vector<std::pair<std::string, std::string>>{
             {"a.pdf", "a.pdf"},
             {"a.pdf", "a 2.pdf"},
             {"a.pdf", "a 3.pdf"},
             {"plain", "plain"},
             {"plain", "plain 2"},
             {".profile", ".profile"},
             {".profile", ".profile 2"},
             {"a.tar.gz", "a.tar.gz"},
             {"a.tar.gz", "a.tar 2.gz"},
             {"-rf", "-rf"},
         }) {
        EXPECT_EQ(saveAttachment(attachment(filename, expected), target), target / expected);
        EXPECT_EQ(contents(target / expected), expected);
    }
    // Neither a folder nor a link that leads nowhere is a free name.
    fs::create_directory(target / "folder");
    fs::create_symlink("nowhere", target / "link");
    EXPECT_EQ(saveAttachment(attachment("folder"), target), target / "folder 2");
    EXPECT_EQ(saveAttachment(attachment("link"), target), target / "link 2");
    EXPECT_FALSE(fs::exists(target / "nowhere"));
    EXPECT_EQ(filesIn(target), 14U);
}

TEST_F(AttachmentFilesTest, ALongNameIsCutBeforeItsExtension) {
    std::string name;
    for (int i = 0; i < 200; ++i) {
        name += "世";
    }
    ASSERT_TRUE(EntryAttachment::isValidFilename(name + ".pdf"));
    for (int i = 0; i < 2; ++i) {
        const auto saved = saveAttachment(attachment(name + ".pdf"), folder.path());
        const auto filename = saved.filename().string();
        EXPECT_LE(filename.size(), 255U);
        EXPECT_TRUE(filename.ends_with(i == 0 ? "世.pdf" : "世 2.pdf")) << filename;
    }
}

TEST_F(AttachmentFilesTest, AFailedSaveLeavesNothing) {
    EXPECT_THROW(saveAttachment(attachment("a"), folder / "missing"), fs::filesystem_error);
    {
        const SmallDisk small(1000);
        EXPECT_THROW(saveAttachment(attachment("a", std::string(5000, 'x')), folder.path()),
                     fs::filesystem_error);
        TemporaryAttachmentCopies copies(folder.path());
        EXPECT_THROW(copies.copy(attachment("a", std::string(5000, 'x'))), fs::filesystem_error);
    }
    EXPECT_EQ(filesIn(folder.path()), 0U);
}

TEST_F(AttachmentFilesTest, CopiesAreForThisUserAndForThisProgramsTime) {
    const auto parent = folder / "deeper" / "tmp";
    {
        TemporaryAttachmentCopies copies(parent);
        const auto first = copies.copy(attachment("a b.txt", "one"));
        const auto second = copies.copy(attachment("a b.txt", "two"));
        EXPECT_EQ(contents(first), "one");
        EXPECT_EQ(contents(second), "two");
        EXPECT_EQ(first.filename(), "a b.txt");
        EXPECT_EQ(permissionsOf(first), 0600U);
        EXPECT_EQ(permissionsOf(first.parent_path()), 0700U);
        const auto name = first.parent_path().filename().string();
        constexpr std::string_view kPrefix = "KorvexAttachment-";
        ASSERT_TRUE(name.starts_with(kPrefix));
        EXPECT_TRUE(base::Uuid::parse(name.substr(kPrefix.size())));
        // Its own are in use.
        copies.removeLeftovers();
        EXPECT_TRUE(fs::exists(first));
        // Whatever the other program left beside the copy goes too.
        write(first.parent_path() / ".a b.txt.swp", "x");
    }
    EXPECT_EQ(filesIn(parent), 0U);
}

TEST_F(AttachmentFilesTest, TheOldestOfManyCopiesGoes) {
    TemporaryAttachmentCopies copies(folder.path());
    const auto first = copies.copy(attachment("a"));
    const auto second = copies.copy(attachment("a"));
    for (std::size_t i = 2; i <= TemporaryAttachmentCopies::kMaximumCopies; ++i) {
        copies.copy(attachment("a"));
    }
    EXPECT_FALSE(fs::exists(first.parent_path()));
    EXPECT_TRUE(fs::exists(second));
    EXPECT_EQ(filesIn(folder.path()), TemporaryAttachmentCopies::kMaximumCopies);
}

TEST_F(AttachmentFilesTest, LeftoversAreThoseOfProgramsThatNoLongerRun) {
    // Another program makes a copy, says so, and waits to be killed.
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        TemporaryAttachmentCopies copies(folder.path());
        copies.copy(attachment("a"));
        const auto written = ::write(ends[1], "x", 1);
        for (;;) {
            ::pause();
        }
        ::_exit(written == 1 ? 0 : 1);
    }
    char ready = 0;
    ASSERT_EQ(::read(ends[0], &ready, 1), 1);
    ::close(ends[0]);
    ::close(ends[1]);

    const auto similar = folder / "KorvexAttachment-mine";
    fs::create_directory(similar);
    const auto outside = folder / "outside";
    fs::create_directory(outside);
    write(outside / "file", "x");
    fs::create_directory_symlink(outside,
                                 folder / ("KorvexAttachment-" + base::Uuid::random().text()));
    const auto leftover = folder / ("KorvexAttachment-" + base::Uuid::random().text());
    fs::create_directory(leftover);
    fs::create_directory_symlink(outside, leftover / "link");

    TemporaryAttachmentCopies copies(folder.path());
    const auto own = copies.copy(attachment("a"));
    copies.removeLeftovers();
    EXPECT_FALSE(fs::exists(leftover));
    EXPECT_TRUE(fs::exists(own));
    EXPECT_TRUE(fs::exists(similar));
    EXPECT_TRUE(fs::exists(outside / "file"));
    EXPECT_EQ(filesIn(folder.path()), 5U) << "the other program's copy";

    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    copies.removeLeftovers();
    EXPECT_EQ(filesIn(folder.path()), 4U);
    EXPECT_TRUE(fs::exists(own));
    TemporaryAttachmentCopies(folder / "missing").removeLeftovers();
}

} // namespace korvex::tests
