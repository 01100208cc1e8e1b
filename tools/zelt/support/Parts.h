#pragma once

#include <orvcore/text/Strings.h>

#include <optional>
#include <string>
#include <vector>

namespace zelt {

/// The part of a package that a word of the command line names: a role, or an entry by its name.
enum class Part { Poster, Video, Project, Entry };
Part PartOf(const std::string& word);

/// The entry's names for a part, of which a package has one or, of projects, several: "thumb_de_DE.png" of a poster for
/// a locale. @param locale  empty: the common one
/// @throws UsageError  when the locale cannot be a part of a name, or one is given for an entry
std::vector<std::string> EntryNames(const std::string& word, const std::string& locale);

/// The name of the entry that a file is to become: of a project the one with the file's extension.
/// @throws UsageError  as EntryNames; of a project when the file is of neither kind
std::string EntryNameFor(const std::string& word, const std::string& locale, const std::string& file);

/// Makes sure by its content that a file suits a part: a poster is a PNG picture, a video an MP4 film.
/// @throws FileError  when it does not, or cannot be read
void NeedSuitable(const std::string& word, const std::string& file);

} // namespace zelt
