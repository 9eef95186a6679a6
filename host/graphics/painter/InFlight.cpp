#include "InFlight.hpp"

namespace tavrin::graphics::painter
{

InFlight::~InFlight()
{
    for (const GLsync portion : mPortions)
        glDeleteSync(portion);
}

void InFlight::endPortion()
{
    mPortions.push_back(glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0));
    glFlush();
    if (mPortions.size() <= 2)
        return;
    constexpr GLuint64 second = 1'000'000'000;
    while (glClientWaitSync(mPortions.front(), GL_SYNC_FLUSH_COMMANDS_BIT, second) ==
           GL_TIMEOUT_EXPIRED)
        continue;
    glDeleteSync(mPortions.front());
    mPortions.pop_front();
}

}
