// The severity of a log record. The values count: 1 is the end of input, 2 a failure.
#pragma once

enum ESeverityLevel : int
{
    severity_of_detail,
    severity_of_a_step,
    severity_of_a_failure,
};
