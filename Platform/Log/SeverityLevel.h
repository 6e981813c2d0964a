// The severity of a log record, ordered: a higher value matters more.
#pragma once

enum class ESeverityLevel : int
{
    Debug = 0, // detail for somebody who is looking for something
    Info = 1,  // a step that ended as it should: the end of input
    Error = 2, // something failed; the caller was told by a false
};
