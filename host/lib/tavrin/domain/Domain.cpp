#include <tavrin/domain/Domain.hpp>

#include <array>

namespace tavrin
{

std::string_view nameOf(TopologyType type)
{
    constexpr std::array<std::string_view, 2> names{"unstructured", "structured"};
    return names.at(static_cast<std::size_t>(type));
}

std::string_view nameOf(StructuringType type)
{
    constexpr std::array<std::string_view, 4> names{"unstructured", "curvilinear", "rectilinear",
                                                    "uniform"};
    return names.at(static_cast<std::size_t>(type));
}

std::string_view nameOf(DomainType type)
{
    constexpr std::array<std::string_view, 2> names{"point-based", "cell-based"};
    return names.at(static_cast<std::size_t>(type));
}

}
