#include <orvmetadatadb/detail/IndexStore.h>

#include <orvmetadatadb/detail/Transaction.h>
#include <orvstorage/SQLiteCodes.h>

// How changes go between memory and the file: writing what is pending, and reading what others have written.
namespace orvmetadatadb::detail {

namespace codes = orvstorage::sqlite;

namespace {

// A list of changes this long, of which few still count, is written again.
constexpr std::uint64_t kLongList = 65536;

// Whether the same write may succeed at any later moment, with nothing done about it.
bool MayPass(int code)
{
    return code == codes::kBusy || code == codes::kInterrupted;
}

} // namespace

void IndexStore::Save()
{
    if (pending_.empty()) {
        return;
    }
    std::int64_t last = 0;
    try {
        // The transaction keeps other writers out from its beginning. What is read now is therefore all that comes
        // before the changes that this call writes, and no other process takes their numbers.
        Transaction transaction(file_.GetConnection());
        CatchUp();
        last = file_.LastChange();
        last = IsWorthWritingAnew(last) ? WriteAnew(last) : WriteChanges(last);
        transaction.Commit();
    } catch (const SQLiteError& error) {
        failure_ = MayPass(error.Code()) ? 0 : error.Code();
        throw;
    }
    // Only after the commit: when it fails the changes stay pending. Memory has them since they were noted, so they
    // are not read back.
    lastRead_ = last;
    pending_.clear();
    saveAt_ = kGroupSize;
    // Memory only grows while rows come and go. Here is the one moment when nothing would be lost: the file has it all.
    if (memory_.IsWasteful()) {
        Forget(); // the next operation reads the whole file again
    }
}

// The number of the last change written.
std::int64_t IndexStore::WriteChanges(std::int64_t last)
{
    // Null at the beginning of every group: another process's change may stand before it, so a group never begins with
    // a row that leaves out its key.
    const Change* before = nullptr; // a key's rows mostly come together
    for (const Change& change : pending_) {
        ++last;
        switch (change.kind) {
        case Change::Kind::Add:
            if (before != nullptr && before->kind == Change::Kind::Add && before->key == change.key) {
                file_.AddRowOfSameKey(last, orvcore::ToUTF8(change.text));
            } else {
                file_.AddRow(last, change.key, orvcore::ToUTF8(change.text));
            }
            break;
        case Change::Kind::RemoveKey:
            file_.RemoveKey(last, change.key);
            break;
        case Change::Kind::RemoveAll:
            file_.RemoveAll(last);
            break;
        }
        before = &change;
    }
    return last;
}

// Folders that are relisted again and again would make the list grow for ever. (With a removal of all rows pending,
// memory is not what the file is to hold, and the removal shortens the list itself.)
bool IndexStore::IsWorthWritingAnew(std::int64_t last)
{
    // Unsigned, because a damaged file may have any first number.
    const auto length = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(file_.FirstChange());
    return length > kLongList && length / 4 > memory_.RowCount() && !IsRemovalPending();
}

// The numbers go on. A reader that was in the middle of the old list finds the removal next, then all rows: it ends
// with the same rows as one that begins here.
std::int64_t IndexStore::WriteAnew(std::int64_t last)
{
    // It empties the list, and is then its first change: a store that reads on from an older number finds it.
    file_.RemoveAll(++last);
    std::u16string_view before;
    memory_.ForEachRow([&](std::u16string_view key, std::u16string_view text) {
        if (key == before) {
            file_.AddRowOfSameKey(++last, orvcore::ToUTF8(text));
        } else {
            file_.AddRow(++last, key, orvcore::ToUTF8(text));
        }
        before = key;
    });
    return last;
}

void IndexStore::CatchUp()
{
    if (IsRemovalPending()) {
        return; // nothing of the file is wanted
    }
    const std::int64_t before = lastRead_;
    int refusal = 0;
    try {
        ReadChanges();
    } catch (const SQLiteError& error) {
        refusal = error.Code();
    }
    // What was read came into memory behind the pending changes, although in the file it comes before them. So these
    // are applied again, also when the reading ended half-way: each change that was read counts.
    if (lastRead_ != before) {
        for (const Change& change : pending_) {
            Apply(change);
        }
    }
    if (refusal != 0) {
        failure_ = refusal == codes::kCorrupt ? refusal : failure_;
        throw SQLiteError(refusal);
    }
}

// A host may interrupt a search anywhere in here. Each change counts as read as soon as memory has it, so the next
// reading goes on behind it; a row of the same key then needs the key that was read before.
void IndexStore::ReadChanges()
{
    // Left open by an exception it would keep its read lock; ChangesAfter resets it before the next reading, and a
    // failed step resets itself.
    Statement& changes = file_.ChangesAfter(lastRead_);
    while (changes.Step()) {
        orvcore::UTF16String path = changes.Units(1);
        const bool isSameKey = path.empty();
        if (!isSameKey) {
            lastKey_ = std::move(path);
        }
        const orvcore::UTF16String text = orvcore::ToUTF16(changes.Text(2));
        // By the table in IndexFile.h. What the library writes has no empty text or key, so an empty value stands for a
        // NULL.
        if (text.empty() && isSameKey) {
            memory_.Clear();
        } else if (text.empty()) {
            memory_.Delete(lastKey_);
        } else if (!lastKey_.empty()) { // a damaged file may begin without one
            memory_.Insert(lastKey_, text);
        }
        lastRead_ = changes.Integer(0);
    }
}

void IndexStore::Apply(const Change& change)
{
    switch (change.kind) {
    case Change::Kind::Add:
        memory_.Insert(change.key, change.text);
        break;
    case Change::Kind::RemoveKey:
        memory_.Delete(change.key);
        break;
    case Change::Kind::RemoveAll:
        memory_.Clear();
        break;
    }
}

} // namespace orvmetadatadb::detail
