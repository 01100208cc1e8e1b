#pragma once

#include <lumolibmanager/LumoLibManager.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace test {

/// A library manager that serves what a test puts into it.
class FakeLibraries : public lumolibmanager::LumoLibManager {
public:
    struct Element {
        std::string name, package, definition, still, video;
    };
    struct Library {
        std::string name;
        std::map<std::string, Element> elements; ///< by identifier
    };

    /// Installed until the fixture's end.
    class Installed {
    public:
        Installed()
        {
            lumolibmanager::SetLumoLibManager(libraries_);
        }
        Installed(const Installed&) = delete;
        Installed& operator=(const Installed&) = delete;
        ~Installed()
        {
            lumolibmanager::SetLumoLibManager(nullptr);
        }
        FakeLibraries* operator->() const
        {
            return libraries_.get();
        }

    private:
        std::shared_ptr<FakeLibraries> libraries_ = std::make_shared<FakeLibraries>();
    };

    void Initialize() override {}
    void Terminate() override {}
    void GetLibraryList(std::vector<std::string>& ids) override
    {
        ids = order;
    }
    std::string GetLibraryNameFromLibraryID(const std::string& id) override
    {
        return libraries[id].name;
    }
    void GetElementIDsForElementType(const std::string& id, const std::string& type,
                                     std::vector<std::string>& ids) override
    {
        ids.clear();
        for (const auto& [elementID, element] : libraries[id].elements) {
            if (type == lumolibmanager::kElementType_Capsule) {
                ids.push_back(elementID);
            }
        }
    }
    std::string GetElementName(const std::string& id, const std::string& elementID) override
    {
        onElement(elementID);
        return Get(id, elementID).name;
    }
    std::string GetPrimaryPath(const std::string& id, const std::string& elementID) override
    {
        return Get(id, elementID).package;
    }
    std::string GetAlternatePath(const std::string& id, const std::string& elementID) override
    {
        return Get(id, elementID).definition;
    }
    std::string GetRenditionPath(const std::string& id, const std::string& elementID, const std::string& type) override
    {
        const Element element = Get(id, elementID);
        return type == lumolibmanager::kMimeType_ImagePNG ? element.still : element.video;
    }

    std::vector<std::string> order; ///< identifiers of the libraries
    std::map<std::string, Library> libraries;
    std::function<void(const std::string& elementID)> onElement = [](const std::string&) {};

private:
    Element Get(const std::string& id, const std::string& elementID)
    {
        const auto& elements = libraries[id].elements;
        const auto found = elements.find(elementID);
        return found == elements.end() ? Element() : found->second;
    }
};

} // namespace test
