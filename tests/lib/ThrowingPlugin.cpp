#include <stdexcept>

namespace
{

struct Thrower
{
    Thrower() { throw std::runtime_error("not today"); }
};

const Thrower thrower;

}
