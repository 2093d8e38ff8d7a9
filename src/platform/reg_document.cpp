#include "platform/reg_document.h"

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

// Up to so many are looked through faster than an index.
constexpr std::size_t kFewEntries = 16;
constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

std::size_t PlaceOf(const RegSection& section, std::string_view name)
{
    if (!section.places.empty()) {
        const auto found = section.places.find(FoldCase(name));
        return found == section.places.end() ? kNowhere : found->second;
    }
    for (std::size_t i = 0; i < section.entries.size(); ++i) {
        if (SameName(section.entries[i].value.name, name)) return i;
    }
    return kNowhere;
}

void Append(RegSection& section, RegEntry entry)
{
    section.entries.push_back(std::move(entry));
    const std::size_t count = section.entries.size();
    if (count <= kFewEntries) return;
    for (std::size_t i = section.places.empty() ? 0 : count - 1; i < count; ++i)
        section.places.emplace(FoldCase(section.entries[i].value.name), i);
}

void Erase(RegSection& section, std::size_t place)
{
    section.places.erase(FoldCase(section.entries[place].value.name));
    section.entries.erase(section.entries.begin() + static_cast<std::ptrdiff_t>(place));
    for (auto& [name, other] : section.places) {
        if (other > place) --other;
    }
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
    const std::size_t place = PlaceOf(*section, name);
    return place == kNowhere ? nullptr : &section->entries[place];
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
    sections_.insert(sections_.begin() + offset, RegSection{std::string(path), {}, {}, {}});
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
    const std::size_t place = PlaceOf(section, entry.value.name);
    if (place == kNowhere) {
        Append(section, std::move(entry));
        ++entryCount_;
        return;
    }
    RegEntry& old = section.entries[place];
    if (entry.comment.empty()) entry.comment = std::move(old.comment);
    old = std::move(entry);
}

bool RegDocument::DeleteEntry(std::string_view path, std::string_view name)
{
    const auto found = index_.find(FoldCase(path));
    if (found == index_.end()) return false;
    RegSection& section = sections_[found->second];
    const std::size_t place = PlaceOf(section, name);
    if (place == kNowhere) return false;
    Erase(section, place);
    --entryCount_;
    return true;
}

bool RegDocument::DeleteKey(std::string_view path)
{
    const std::string key = FoldCase(path);
    std::size_t kept = 0;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        if (IsAtOrBelow(folded_[i], key)) {
            entryCount_ -= sections_[i].entries.size();
        } else {
            if (kept != i) {
                sections_[kept] = std::move(sections_[i]);
                folded_[kept] = std::move(folded_[i]);
            }
            ++kept;
        }
    }
    if (sections_.size() == kept) return false;
    sections_.resize(kept);
    folded_.resize(kept);
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
