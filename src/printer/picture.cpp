#include "printer/picture.h"

#include <cerrno>
#include <optional>
#include <string_view>
#include <system_error>

#include "platform/files.h"

namespace marbex::printer {

namespace {

// Far above any picture that fits a receipt.
constexpr uint64_t kLargestFile = 256U << 20;
constexpr std::size_t kLongestFileError = 255;

constexpr std::string_view kNoMemory = "Can not allocate enough memory\t";
constexpr std::string_view kNoPicture = "IPicture interface is not supported\t";

void Report(std::string_view text)
{
    std::string line("CPicture Error: ");
    line += text;
    line += '\n';
    platform::WriteDebugOutput(line);
}

void ReportFileError(int error)
{
    const std::string text = error != 0 ? std::generic_category().message(error) : "The file cannot be read";
    Report(std::string_view(text).substr(0, kLongestFileError));
}

}  // namespace

bool CPicture::Load(const std::string& fileName)
{
    picture_.reset();
    errno = 0;
    std::optional<std::string> file;
    try {
        file = platform::ReadWholeFile(fileName, kLargestFile);
    } catch (const std::bad_alloc&) {
        Report(kNoMemory);
        return false;
    }
    if (!file) {
        ReportFileError(errno);
        return false;
    }
    platform::PictureError error = platform::PictureError::kNone;
    picture_ = platform::DecodePicture(*file, error);
    if (error == platform::PictureError::kNoMemory) Report(kNoMemory);
    if (error == platform::PictureError::kNotAPicture) Report(kNoPicture);
    return picture_ != nullptr;
}

bool CPicture::Render(uint32_t width, uint32_t height, uint32_t firstRow, uint32_t rows,
                      std::span<uint32_t> pixels) const
{
    if (picture_ == nullptr) return false;
    if (picture_->Draw(width, height, firstRow, rows, pixels)) return true;
    Report(kNoMemory);
    return false;
}

}  // namespace marbex::printer
