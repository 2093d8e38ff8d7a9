#include "marbex_opos/console/line_buffer.h"

namespace marbex::tools {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

}  // namespace

void LineBuffer::Append(std::string_view bytes)
{
    pending_.append(bytes);
}

std::optional<std::string> LineBuffer::TakeLine()
{
    const std::size_t end = pending_.find('\n', searched_);
    if (end == std::string::npos) {
        searched_ = pending_.size();
        return std::nullopt;
    }
    std::string line = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    searched_ = 0;
    if (isFirst_ && line.starts_with(kUtf8Mark)) line.erase(0, kUtf8Mark.size());
    isFirst_ = false;
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

std::optional<std::string> LineBuffer::TakeRest()
{
    if (pending_.empty()) return std::nullopt;
    pending_ += '\n';
    return TakeLine();
}

}  // namespace marbex::tools
