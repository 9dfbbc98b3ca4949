#include "batch_journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "failure.h"
#include "write_errors.h"

namespace sonivex_tool {
namespace {

using Json = nlohmann::json;

constexpr char kPrefix[] = ".sonivex-batch";
constexpr char kSuffix[] = ".jsonl";
constexpr mode_t kNewFileMode = 0666;  // before the umask
constexpr size_t kLongestLine_bytes = size_t{1} << 20;

std::string textOf(const Json& object) {
    return object.dump();
}

// A string as JSON. JSON holds UTF-8 only, but a file's name may be any bytes; such a name becomes an array
// of its bytes.
Json exactly(const std::string& text) {
    try {
        (void)Json(text).dump();
        return text;
    } catch (const Json::type_error&) {
        return std::vector<unsigned char>(text.begin(), text.end());
    }
}

// The parts of a finished line that are searched for. The exit code is only a remark.
Json keyOf(const FinishedFile& file, const std::vector<std::string>& basis) {
    std::vector<Json> exact_basis;
    exact_basis.reserve(basis.size());
    for (const std::string& part : basis) exact_basis.push_back(exactly(part));
    return {{"output", exactly(file.name)},
            {"output_bytes", file.output_stamp.size_bytes},
            {"output_mtime_ns", file.output_stamp.mtime_ns},
            {"input", exactly(file.input)},
            {"input_bytes", file.input_stamp.size_bytes},
            {"input_mtime_ns", file.input_stamp.mtime_ns},
            {"basis", exact_basis}};
}

bool isJournal(const std::string& name) {
    return name.rfind(kPrefix, 0) == 0 && name.size() > std::strlen(kSuffix) &&
           name.compare(name.size() - std::strlen(kSuffix), std::string::npos, kSuffix) == 0;
}

}  // namespace

std::string journalName(const Shard& shard) {
    if (shard.count == 1) return std::string(kPrefix) + kSuffix;
    return std::string(kPrefix) + "-" + std::to_string(shard.number) + "-of-" + std::to_string(shard.count) +
           kSuffix;
}

BatchJournal::BatchJournal(const std::string& folder, const Shard& shard, std::vector<std::string> basis)
    : path_((std::filesystem::path(folder) / journalName(shard)).string()), basis_(std::move(basis)) {
    const std::string whole_list = (std::filesystem::path(folder) / journalName(Shard{})).string();
    if (shard.count > 1) {
        whole_list_descriptor_ = openFile(whole_list);
        lock(whole_list_descriptor_, LOCK_SH);
    }
    descriptor_ = openFile(path_);
    lock(descriptor_, LOCK_EX);
    readAll(folder);
    // A line that was cut off must not run into the next one.
    std::array<char, 1> last{};
    const off_t size = ::lseek(descriptor_, 0, SEEK_END);
    if (size > 0 && ::pread(descriptor_, last.data(), 1, size - 1) == 1 && last[0] != '\n') append("");
}

BatchJournal::~BatchJournal() {
    for (const int descriptor : {descriptor_, whole_list_descriptor_}) {
        if (descriptor >= 0) ::close(descriptor);
    }
}

int BatchJournal::openFile(const std::string& path) const {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, kNewFileMode);
    if (descriptor >= 0) return descriptor;
    const int error_number = errno;
    throw Failure(exitCodeOfWriteError(error_number),
                  "cannot write the state file \"" + path + "\": " + std::strerror(error_number));
}

void BatchJournal::lock(int descriptor, int operation) {
    if (::flock(descriptor, operation | LOCK_NB) == 0) return;
    if (errno != EWOULDBLOCK) {
        notes_.push_back("cannot lock the state file \"" + path_ + "\": " + std::strerror(errno) +
                         "; make sure that no other batch writes to this folder");
        return;
    }
    throw Failure(ExitCode::OutputNotWritable,
                  "another batch is writing to \"" +
                      std::filesystem::path(path_).parent_path().lexically_normal().string() +
                      "\"; wait for its end or choose another --output-folder");
}

void BatchJournal::readAll(const std::string& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::error_code gone;
        if (isJournal(name) && entry->is_regular_file(gone)) readFile(entry->path().string());
    }
    if (error) {
        throw Failure(ExitCode::OutputNotWritable,
                      "cannot read the folder \"" + folder + "\": " + error.message());
    }
}

void BatchJournal::readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> buffer(kLongestLine_bytes);
    size_t bad_lines = 0;
    while (file.getline(buffer.data(), static_cast<std::streamsize>(buffer.size())) || file.gcount() > 0) {
        if (file.fail() && !file.eof()) {
            file.clear();  // the line is longer than any that a batch writes
            file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
            ++bad_lines;
            continue;
        }
        const std::string_view line(buffer.data());
        if (!line.empty() && !takeLine(line)) ++bad_lines;
    }
    if (bad_lines > 0) {
        notes_.push_back("the state file \"" + path + "\" has " + std::to_string(bad_lines) +
                         (bad_lines == 1 ? " line" : " lines") +
                         " that cannot be read; what they record is rendered again");
    }
}

bool BatchJournal::takeLine(std::string_view line) {
    Json object = Json::parse(line, nullptr, false);
    if (!object.is_object()) return false;
    const auto name = object.find("output");
    if (name == object.end() || !(name->is_string() || name->is_array())) return false;
    known_.insert(textOf(*name));
    if (object.contains("basis")) finished_.insert(textOf(object));
    return true;
}

std::optional<int> BatchJournal::exitCodeOf(const FinishedFile& file) const {
    Json line = keyOf(file, basis_);
    for (const ExitCode code : {ExitCode::Success, ExitCode::InputDamaged}) {
        line["exit_code"] = static_cast<int>(code);
        if (finished_.contains(textOf(line))) return static_cast<int>(code);
    }
    return std::nullopt;
}

bool BatchJournal::knows(const std::string& name) const {
    return known_.contains(textOf(exactly(name)));
}

void BatchJournal::addBegun(const std::string& name) {
    const Json exact_name = exactly(name);
    append(textOf(Json{{"output", exact_name}}));
    known_.insert(textOf(exact_name));
}

void BatchJournal::addFinished(const FinishedFile& file) {
    Json line = keyOf(file, basis_);
    line["exit_code"] = file.exit_code;
    const std::string text = textOf(line);
    append(text);
    known_.insert(textOf(line["output"]));
    finished_.insert(text);
}

void BatchJournal::append(const std::string& line) {
    const std::string text = line + "\n";
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor_, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            const int error_number = errno;
            throw Failure(exitCodeOfWriteError(error_number),
                          "cannot write the state file \"" + path_ + "\": " + std::strerror(error_number));
        }
        written += static_cast<size_t>(count);
    }
    (void)::fdatasync(descriptor_);  // without it, a crash of the machine only costs some files' rendering
}

}  // namespace sonivex_tool
