#include <sources/detail/NoteFormat.h>

#include <orvcore/text/shared/LittleEndian.h>

#include <concepts>

namespace orvcapsule::detail {

// Both directions walk the same list of fields, so they cannot drift apart. A change of that list, or of what an entry
// says of a package, needs a new kFormat in ListingNotes.cpp: old notes carry no version of their own and would be
// misread.

namespace {

// Integers have their own width, truth values one byte, times eight. A text is a count of 4 bytes and its UTF-16 units,
// a list a count and its texts. A note is the subject's size and bytes, then the rest's size and bytes: so a reader
// finds the next note without knowing what is in this one.
class Writer {
public:
    explicit Writer(std::string& bytes)
        : bytes_(bytes)
    {
    }

    template <std::integral T>
    void operator()(const T& value)
    {
        orvcore::AppendLittleEndian(bytes_, static_cast<std::uint64_t>(value), sizeof(T));
    }
    void operator()(const orvcore::FileTime& time)
    {
        (*this)(std::int64_t{time.time_since_epoch().count()});
    }
    void operator()(const orvcore::UTF16String& text)
    {
        (*this)(static_cast<std::uint32_t>(text.size()));
        for (const char16_t unit : text) {
            (*this)(static_cast<std::uint16_t>(unit));
        }
    }
    void operator()(const std::vector<orvcore::UTF16String>& texts)
    {
        (*this)(static_cast<std::uint32_t>(texts.size()));
        for (const orvcore::UTF16String& text : texts) {
            (*this)(text);
        }
    }

private:
    std::string& bytes_;
};

// Never reads beyond the bytes, and never takes memory for more than they can hold.
class Reader {
public:
    explicit Reader(std::string_view bytes)
        : bytes_(bytes)
    {
    }

    template <std::integral T>
    void operator()(T& value)
    {
        const std::string_view piece = Take(sizeof(T));
        value = static_cast<T>(orvcore::LoadLittleEndian(piece.data(), piece.size()));
    }
    void operator()(orvcore::FileTime& time)
    {
        std::int64_t count = 0;
        (*this)(count);
        time = orvcore::FileTime(std::chrono::microseconds(count));
    }
    void operator()(orvcore::UTF16String& text)
    {
        const std::string_view piece = Take(2 * TakeCount(2));
        text = orvcore::UTF16String(piece.size() / 2, u'\0'); // resizing would take more room than it needs
        for (std::size_t i = 0; i < text.size(); ++i) {
            text[i] = static_cast<char16_t>(orvcore::LoadLittleEndian(piece.data() + 2 * i, 2));
        }
    }
    void operator()(std::vector<orvcore::UTF16String>& texts)
    {
        texts.resize(TakeCount(4));
        for (orvcore::UTF16String& text : texts) {
            (*this)(text);
        }
    }

    std::string_view Take(std::size_t count)
    {
        failed_ = failed_ || count > bytes_.size();
        const std::string_view piece = bytes_.substr(0, failed_ ? 0 : count);
        bytes_.remove_prefix(piece.size());
        return piece;
    }
    // A number of things that take at least `each` bytes.
    std::size_t TakeCount(std::size_t each)
    {
        std::uint32_t count = 0;
        (*this)(count);
        failed_ = failed_ || count > bytes_.size() / each;
        return failed_ ? 0 : count;
    }
    // Bytes that are left over are a sign of another format, or of damage.
    bool IsWhole() const
    {
        return !failed_ && bytes_.empty();
    }
    bool HasFailed() const
    {
        return failed_;
    }
    std::string_view Left() const
    {
        return bytes_;
    }

private:
    std::string_view bytes_;
    bool failed_ = false;
};

// What a note holds, for both directions.
template <class Archive, class State>
void WalkState(Archive& archive, State& state)
{
    archive(state.facts.size);
    archive(state.facts.modified);
    archive(state.facts.replaced);
    archive(state.hasStill);
    archive(state.hasVideo);
}

template <class Archive, class Entry>
void WalkFields(Archive& archive, Entry& entry)
{
    archive(entry.name);
    archive(entry.capsuleID);
    archive(entry.licenseID);
    archive(entry.mobileCompatibilityVersion);
    archive(entry.apiVersion);
    archive(entry.frameWidth);
    archive(entry.frameHeight);
    archive(entry.durationMs);
    archive(entry.needsTsUpgrade);
    archive(entry.hasUnsupportedEffects);
    archive(entry.entryKind);
    archive(entry.usedFonts);
    archive(entry.description);
    archive(entry.tags);
    archive(entry.authorApp);
}

} // namespace

void AppendNote(std::string& bytes, const CapsuleEntry& entry, const NotedFile& state)
{
    std::string rest;
    Writer note(rest);
    WalkState(note, state);
    WalkFields(note, entry);
    Writer writer(bytes);
    const orvcore::UTF8String& subject = state.SubjectFor(entry);
    writer(static_cast<std::uint32_t>(subject.size()));
    bytes += orvcore::AsNarrow(subject);
    writer(static_cast<std::uint32_t>(rest.size()));
    bytes += rest;
}

bool TakeNote(std::string_view& bytes, std::u8string_view& subject, std::string_view& rest)
{
    Reader reader(bytes);
    subject = orvcore::AsUTF8(reader.Take(reader.TakeCount(1)));
    rest = reader.Take(reader.TakeCount(1));
    bytes = reader.Left();
    return !reader.HasFailed();
}

bool TakeState(std::string_view& rest, NotedFile& state)
{
    Reader reader(rest);
    WalkState(reader, state);
    rest = reader.Left();
    return !reader.HasFailed();
}

bool ReadFields(std::string_view rest, CapsuleEntry& entry)
{
    Reader reader(rest);
    WalkFields(reader, entry);
    return reader.IsWhole();
}

} // namespace orvcapsule::detail
