#include "report.h"

#include <filesystem>

#include "failure.h"
#include "output_file.h"
#include "picture.h"
#include "report_page.h"
#include "report_pictures.h"

namespace sonivex_tool {
namespace {

void writeFile(const std::string& path, const std::string& bytes, bool replace) {
    OutputFile file(path, replace);
    // The buffer takes an int; a page is far below its limit.
    avio_write(file.io(), reinterpret_cast<const unsigned char*>(bytes.data()),
               static_cast<int>(bytes.size()));
    file.commit();
}

std::string picturePath(const std::string& folder, const std::string& name) {
    return (std::filesystem::path(folder) / (name + ".png")).string();
}

void makeFolder(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        throw Failure(ExitCode::OutputNotWritable, "cannot make the folder \"" + folder + "\"");
}

// A page in the place of the sound would be its loss, which --force can hardly mean.
void requireOtherFile(const ReportSettings& settings) {
    std::error_code error;
    if (settings.page.empty() || !std::filesystem::equivalent(settings.page, settings.input.path, error))
        return;
    throw Failure(ExitCode::Usage,
                  "the page would replace IN: \"" + settings.page + "\" is the file to read; name another");
}

// Measuring takes long, so what would be refused after it is refused before. Without chosen versions only
// measuring tells which there are beside the original.
void checkOutputs(const ReportSettings& settings) {
    if (!settings.page.empty()) OutputFile::check(settings.page, settings.replace);
    if (settings.picture_folder.empty()) return;
    makeFolder(settings.picture_folder);
    std::vector<std::string> versions{"original"};
    for (const VersionChoice& version : settings.versions) versions.push_back(fileNameOf(version));
    for (const std::string& name : certainPictureNames(versions))
        OutputFile::check(picturePath(settings.picture_folder, name), settings.replace);
}

std::vector<std::string> writePictures(const std::vector<PictureGroup>& groups,
                                       const ReportSettings& settings) {
    std::vector<std::string> paths;
    for (const PictureGroup& group : groups) {
        for (const ReportPicture& picture : group.pictures) {
            paths.push_back(picturePath(settings.picture_folder, picture.name));
            writeFile(paths.back(),
                      sonivex_plotting::pictureFile(sonivex_plotting::PictureFormat::Png, picture.width,
                                                    picture.height, "Sonivex report: " + picture.name,
                                                    picture.draw),
                      settings.replace);
        }
    }
    return paths;
}

}  // namespace

ReportResult makeReport(const ReportSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                        Console& console) {
    requireOtherFile(settings);
    checkOutputs(settings);
    ReportResult result;
    result.report = measureReport(settings, plugin, console);
    const std::vector<PictureGroup> groups = picturesOf(result.report);
    // The page comes first: it holds everything, even where a picture cannot be written.
    if (!settings.page.empty()) {
        const std::string page = pageOf(result.report, groups);
        result.page_bytes = page.size();
        writeFile(settings.page, page, settings.replace);
    }
    if (!settings.picture_folder.empty()) result.picture_paths = writePictures(groups, settings);
    return result;
}

}  // namespace sonivex_tool
