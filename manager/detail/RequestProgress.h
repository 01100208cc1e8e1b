#pragma once

#include <sources/CheckCancel.h>

#include <string_view>

namespace orvcapsule::detail {

// Titles in the host's progress display.
inline constexpr std::string_view kProgressCategoryTitle =
    "$$$/GraphicSourceManager/DefaultGraphicSetProgressCategoryTitle=Get Graphics";
inline constexpr std::string_view kProgressAllItemTitle =
    "$$$/GraphicSourceManager/DefaultGraphicSetProgressAllItemTitle=Loading All Graphics";
inline constexpr std::string_view kProgressItemTitle =
    "$$$/GraphicSourceManager/DefaultGraphicSetProgressItemTitle=Loading Graphics";
inline constexpr std::string_view kLoadingCanceled =
    "$$$/GraphicSourceManager/LoadingGraphicsCanceled=Graphic Loading Canceled";

/// Opens a progress range from 0 to `upper` on a token that is not shared yet.
void OpenProgress(CheckCancel& token, double upper, std::string_view itemTitle);

/// Ends the token's progress item with its scope, however the work in it ends.
class ProgressEnd {
public:
    explicit ProgressEnd(const CheckCancel& token);
    ProgressEnd(const ProgressEnd&) = delete;
    ProgressEnd& operator=(const ProgressEnd&) = delete;
    ~ProgressEnd();

private:
    const CheckCancel& token_;
};

/// Moves the token's progress item to `position`, where it has one: past a source that did not advance it all the way.
void MoveProgress(const CheckCancel& token, double position);

/// Sets the text of the token's progress item to the reason; the cancellation has already taken the item out of its
/// category.
void TellCanceled(const CheckCancel& token);

} // namespace orvcapsule::detail
