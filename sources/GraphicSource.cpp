#include <sources/GraphicSource.h>

namespace orvcapsule {

IGraphicSource::~IGraphicSource() = default;

void IGraphicSource::Initialize() {}

void IGraphicSource::Terminate() {}

std::set<orvcore::UTF8String> IGraphicSource::GetDirectories() const
{
    return {};
}

void IGraphicSource::SetFilterType(const orvcore::UTF8String&) {}

float IGraphicSource::GetProgressWeight() const
{
    return 1.0F;
}

ILocalGraphicSource::~ILocalGraphicSource() = default;

} // namespace orvcapsule
