#pragma once

#include <vtkXMLDataElement.h>

#include <string>
#include <string_view>

namespace tavrin::io
{

/// The first child element with a name; null if there is none.
vtkXMLDataElement* child(vtkXMLDataElement& element, const char* name);

/// Calls `visitor(child)` for all child elements with a name.
template<typename Visitor>
void forChildren(vtkXMLDataElement* element, const char* name, const Visitor& visitor)
{
    for (int i = 0; element != nullptr && i < element->GetNumberOfNestedElements(); ++i)
    {
        vtkXMLDataElement& nested = *element->GetNestedElement(i);
        if (std::string_view(nested.GetName()) == name)
            visitor(nested);
    }
}

/// The last array with a name among the children, in accordance with `DataFile::addArray`; null if
/// there is none.
vtkXMLDataElement* findArray(vtkXMLDataElement* section, const std::string& name);

/// As `findArray`, but throws `Malformed` if there is none; the text says that `where` lacks it.
vtkXMLDataElement& requireArray(vtkXMLDataElement* section, const std::string& name,
                                const std::string& where);

/// The array of a section that has only one, such as Points. Throws `Malformed` if there is none.
vtkXMLDataElement& onlyArray(vtkXMLDataElement& piece, const char* section);

}
