#include <tavrin/io/xml/XmlElements.hpp>

#include <tavrin/io/Malformed.hpp>
#include <tavrin/io/xml/XmlValues.hpp>

namespace tavrin::io
{

vtkXMLDataElement* child(vtkXMLDataElement& element, const char* name)
{
    return element.FindNestedElementWithName(name);
}

vtkXMLDataElement* findArray(vtkXMLDataElement* section, const std::string& name)
{
    vtkXMLDataElement* found = nullptr;
    forChildren(section, "DataArray",
                [&](vtkXMLDataElement& array)
                {
                    if (XmlValues::attribute(array, "Name") == name)
                        found = &array;
                });
    return found;
}

vtkXMLDataElement& requireArray(vtkXMLDataElement* section, const std::string& name,
                                const std::string& where)
{
    vtkXMLDataElement* const array = findArray(section, name);
    if (array == nullptr)
        throw Malformed("the array \"" + name + "\" of its " + where + " is missing");
    return *array;
}

vtkXMLDataElement& onlyArray(vtkXMLDataElement& piece, const char* section)
{
    vtkXMLDataElement* found = nullptr;
    forChildren(child(piece, section), "DataArray",
                [&](vtkXMLDataElement& array) { found = &array; });
    if (found == nullptr)
        throw Malformed(std::string("a piece has no ") + section);
    return *found;
}

}
