#include <tavrin/pipeline/Json.hpp>

namespace tavrin::pipeline
{

std::string jsonText(const Json& json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}
