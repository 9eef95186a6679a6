#pragma once

#include <vtkXMLDataElement.h>

#include <string>
#include <string_view>

namespace tavrin::io
{

/// The first child element of a name; null where there is none.
vtkXMLDataElement* child(vtkXMLDataElement& element, const char* name);

/// Calls `visitor(element)` for the child elements of a name.
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

/// The last array of a name among the children, as `DataFile::addArray` keeps the last; null where
/// there is none.
vtkXMLDataElement* findArray(vtkXMLDataElement* section, const std::string& name);

/// The same for an array that has to be there; throws `Malformed`, which says `where` it is missing.
vtkXMLDataElement& requireArray(vtkXMLDataElement* section, const std::string& name,
                                const std::string& where);

/// The only array of a section of a piece, such as that of Points. Throws `Malformed`.
vtkXMLDataElement& onlyArray(vtkXMLDataElement& piece, const char* section);

}
