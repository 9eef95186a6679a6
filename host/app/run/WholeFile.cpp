#include "WholeFile.hpp"

#include <tavrin/io/OutputFile.hpp>

namespace tavrin::app
{

void writeWholeFile(const std::filesystem::path& file, std::string_view bytes,
                    const volatile bool& abortFlag)
{
    io::OutputFile output(file, abortFlag);
    output.stream() << bytes;
    output.complete();
    output.publish();
}

}
