#include "platform/posix/reg_document.h"

#include <algorithm>
#include <unordered_set>

#include "platform/unicode.h"

namespace marbex::platform {

namespace {

bool IsAtOrBelow(std::string_view foldedPath, std::string_view foldedKey)
{
    return foldedPath.starts_with(foldedKey) &&
           (foldedPath.size() == foldedKey.size() || foldedPath[foldedKey.size()] == '\\');
}

std::string_view Above(std::string_view path)
{
    const std::size_t separator = path.rfind('\\');
    return separator == std::string_view::npos ? std::string_view() : path.substr(0, separator);
}

}  // namespace

bool RegDocument::KeyExists(std::string_view path) const
{
    const std::string key = FoldCase(path);
    if (index_.contains(key)) return true;
    return std::any_of(folded_.begin(), folded_.end(), [&](const auto& other) { return IsAtOrBelow(other, key); });
}

std::vector<std::string> RegDocument::Subkeys(std::string_view path) const
{
    const std::string key = FoldCase(path);
    std::vector<std::string> names;
    std::unordered_set<std::string> seen;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        if (!IsAtOrBelow(folded_[i], key) || folded_[i].size() == key.size()) continue;
        // Folding may change the length of a name, so both forms are cut by counting separators.
        std::string_view folded = std::string_view(folded_[i]).substr(key.size() + 1);
        folded = folded.substr(0, folded.find('\\'));
        if (!seen.emplace(folded).second) continue;
        std::string_view name = sections_[i].path;
        for (auto depth = std::count(key.begin(), key.end(), '\\') + 1; depth > 0; --depth) {
            name.remove_prefix(name.find('\\') + 1);
        }
        names.emplace_back(name.substr(0, name.find('\\')));
    }
    return names;
}

const RegSection* RegDocument::Find(std::string_view path) const
{
    const auto found = index_.find(FoldCase(path));
    return found == index_.end() ? nullptr : &sections_[found->second];
}

const RegEntry* RegDocument::FindEntry(std::string_view path, std::string_view name) const
{
    const RegSection* section = Find(path);
    if (section == nullptr) return nullptr;
    const auto found = std::find_if(section->entries.begin(), section->entries.end(),
                                    [&](const RegEntry& entry) { return SameName(entry.value.name, name); });
    return found == section->entries.end() ? nullptr : &*found;
}

RegSection& RegDocument::EnsureAtEnd(std::string_view path)
{
    std::string key = FoldCase(path);
    if (const auto found = index_.find(key); found != index_.end()) return sections_[found->second];
    return Insert(sections_.size(), path, std::move(key));
}

RegSection& RegDocument::Ensure(std::string_view path)
{
    std::string key = FoldCase(path);
    if (const auto found = index_.find(key); found != index_.end()) return sections_[found->second];
    for (std::string_view above = Above(key); !above.empty(); above = Above(above)) {
        const auto last = std::find_if(folded_.rbegin(), folded_.rend(),
                                       [&](const std::string& other) { return IsAtOrBelow(other, above); });
        if (last == folded_.rend()) continue;
        const auto place = static_cast<std::size_t>(folded_.rend() - last);
        return Insert(place, path, std::move(key));
    }
    return Insert(sections_.size(), path, std::move(key));
}

RegSection& RegDocument::Insert(std::size_t place, std::string_view path, std::string foldedPath)
{
    const auto offset = static_cast<std::ptrdiff_t>(place);
    sections_.insert(sections_.begin() + offset, RegSection{std::string(path), {}, {}});
    folded_.insert(folded_.begin() + offset, std::move(foldedPath));
    if (place + 1 == sections_.size()) {
        index_.emplace(folded_.back(), place);
    } else {
        Reindex();
    }
    return sections_[place];
}

void RegDocument::Set(std::string_view path, RegEntry entry)
{
    RegSection& section = Ensure(path);
    for (RegEntry& old : section.entries) {
        if (!SameName(old.value.name, entry.value.name)) continue;
        if (entry.comment.empty()) entry.comment = std::move(old.comment);
        old = std::move(entry);
        return;
    }
    section.entries.push_back(std::move(entry));
}

bool RegDocument::DeleteEntry(std::string_view path, std::string_view name)
{
    const auto found = index_.find(FoldCase(path));
    if (found == index_.end()) return false;
    return std::erase_if(sections_[found->second].entries,
                         [&](const RegEntry& entry) { return SameName(entry.value.name, name); }) > 0;
}

bool RegDocument::DeleteKey(std::string_view path)
{
    const std::string key = FoldCase(path);
    const std::size_t before = sections_.size();
    for (std::size_t i = sections_.size(); i-- > 0;) {
        if (!IsAtOrBelow(folded_[i], key)) continue;
        sections_.erase(sections_.begin() + static_cast<std::ptrdiff_t>(i));
        folded_.erase(folded_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (sections_.size() == before) return false;
    Reindex();
    // A key that only stood in the file as the beginning of the deleted one must not go with it.
    const std::string_view above = Above(path);
    if (above.find('\\') != std::string_view::npos && !KeyExists(above)) Ensure(above);
    return true;
}

void RegDocument::Reindex()
{
    index_.clear();
    for (std::size_t i = 0; i < folded_.size(); ++i)
        index_.emplace(folded_[i], i);
}

}  // namespace marbex::platform
