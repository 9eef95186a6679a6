#include <tavrin/algorithm/RunLog.hpp>

namespace tavrin
{

void RunLog::restart()
{
    mBuffer.clear();
    mStream.clear();
    mStream.copyfmt(std::ostream(nullptr));
}

void RunLog::Buffer::clear()
{
    mText.clear();
    mNumPassed = 0;
}

std::streamsize RunLog::Buffer::xsputn(const char* characters, std::streamsize count)
{
    mText.append(characters, static_cast<std::size_t>(count));
    passCompleteLines();
    return count;
}

RunLog::Buffer::int_type RunLog::Buffer::overflow(int_type character)
{
    if (traits_type::eq_int_type(character, traits_type::eof()))
        return traits_type::not_eof(character);
    mText += traits_type::to_char_type(character);
    passCompleteLines();
    return character;
}

void RunLog::Buffer::passCompleteLines()
{
    for (std::size_t end; (end = mText.find('\n', mNumPassed)) != std::string::npos;)
    {
        const std::string line = mText.substr(mNumPassed, end - mNumPassed);
        mNumPassed = end + 1;
        mOnLine(line);
    }
}

void RunLog::Buffer::finishLine()
{
    if (mNumPassed == mText.size())
        return;
    const std::string line = mText.substr(mNumPassed);
    mNumPassed = mText.size();
    mOnLine(line);
}

}
