#include <tavrin/pipeline/WholeFile.hpp>

#include <tavrin/io/OutputFile.hpp>

namespace tavrin::pipeline
{

std::unique_ptr<io::PendingFile> prepareWholeFile(const std::filesystem::path& file,
                                                  std::string_view bytes,
                                                  const volatile bool& abortFlag)
{
    auto output = std::make_unique<io::OutputFile>(file, abortFlag);
    output->stream() << bytes;
    output->complete();
    return output;
}

}
