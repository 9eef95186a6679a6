#pragma once

namespace support
{

inline const volatile bool neverAbort = false;
inline const volatile bool alreadyAborted = true;

}
