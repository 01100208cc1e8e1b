#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/OpenPackage.h>
#include <tools/zelt/support/Parts.h>

#include <orvcore/files/Files.h>
#include <package/PackageNames.h>

#include <functional>

namespace zelt {

namespace {

using orvcapsule::CapsuleZip;

// Without it a package is none, and with a broken one it is lost to hosts.
void RefuseDefinition(const std::string& entry)
{
    if (orvcore::AsUTF8(entry) == orvcapsule::kJSONFileName) {
        throw UsageError("the definition is changed by \"zelt set --definition FILE\"");
    }
}

// Changes an entry; again where another program has changed the package meanwhile.
void Change(CapsuleZip& package, const std::string& file, const std::function<bool()>& change)
{
    constexpr int kMostAttempts = 100;
    const Progress progress("storing");
    for (int attempt = 0; !change(); ++attempt) {
        if (package.GetLastFailure().error != orvstorage::ZipError::ArchiveChanged || attempt == kMostAttempts) {
            throw FileError(file, package.GetLastFailure().Reason());
        }
        // Another program has changed the package: look at it again and make the same change there.
        package.Reopen();
    }
}

// Which of a part's names the package has.
std::string NeedEntry(const CapsuleZip& package, const RemoveOptions& options)
{
    std::string found;
    for (const std::string& name : EntryNames(options.part, options.locale)) {
        if (!package.GetArchive().Contains(orvcore::AsUTF8(name))) {
            continue;
        }
        if (!found.empty()) {
            throw UsageError("it has both \"" + found + "\" and \"" + name + "\"; name the one to remove");
        }
        found = name;
    }
    if (found.empty()) {
        const orvstorage::ZipFailure failure =
            package.GetArchive().GetEntries().empty() ? package.GetLastFailure() : orvstorage::ZipFailure();
        throw FileError(options.file, failure ? failure.Reason()
                                      : PartOf(options.part) == Part::Entry
                                          ? "there is no entry \"" + options.part + "\" in it"
                                          : "there is no such " + options.part + " in it");
    }
    return found;
}

} // namespace

ExitCode RunPut(const PutOptions& options)
{
    return OnFile(options.file, [&] {
        const std::string name = EntryNameFor(options.part, options.locale, options.source);
        RefuseDefinition(name);
        NeedSuitable(options.part, options.source);
        if (!orvcore::IsFile(ToPath(options.file))) {
            throw FileError(options.file, "there is no such file");
        }
        CapsuleZip package = OpenPackage(ToPath(options.file));
        if (options.form.noClobber && package.GetArchive().Contains(orvcore::AsUTF8(name))) {
            throw FileError(options.file, "it has an entry \"" + name + "\" already");
        }
        Change(package, options.file, [&] { return package.PutEntry(orvcore::AsUTF8(name), ToPath(options.source)); });
        PrintWritten(options.form, options.file, name + " put", {"put", name});
    });
}

ExitCode RunRemove(const RemoveOptions& options)
{
    return OnFile(options.file, [&] {
        CapsuleZip package = OpenPackage(ToPath(options.file));
        const std::string name = NeedEntry(package, options);
        RefuseDefinition(name);
        Change(package, options.file, [&] { return package.RemoveEntry(orvcore::AsUTF8(name)); });
        PrintWritten(options.form, options.file, name + " removed", {"removed", name});
    });
}

} // namespace zelt
