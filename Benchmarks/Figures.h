// What the benchmark programs that measure whole threads share: the list of figures, its JSON form, medians, and the
// command line's options. Not for the library.
//
// A figure is one line of a result: a name, what is aimed at, the figure itself with its unit, and its ratio to a limit
// that was measured in turns with it.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

inline void Require(bool bSuccess, const char* what)
{
    if (!bSuccess)
    {
        throw std::runtime_error(what);
    }
}

template<class Work>
double Seconds_Of(Work work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

inline double Median_Of(std::vector<double> values)
{
    Require(!values.empty(), "something to take the median of");
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct SFigure
{
    std::string name;
    std::string goal; // empty: none
    double value = 0;
    std::string unit;
    double ratio = 0; // to the limit; 0: there is none
};

class CFigures
{
public:
    CFigures() { std::printf("%-52s %12s %-10s %8s   %s\n", "", "figure", "", "ratio", "goal"); }

    void Add(const SFigure& figure)
    {
        std::printf("%-52s %12.3f %-10s %8.3f   %s\n", figure.name.c_str(), figure.value, figure.unit.c_str(),
                    figure.ratio, figure.goal.c_str());
        std::fflush(stdout);
        m_figures.push_back(figure);
    }

    void Json_Write(const std::string& path) const
    {
        std::ofstream file(path);
        file << "[\n";
        for (std::size_t i = 0; i < m_figures.size(); ++i)
        {
            const SFigure& one = m_figures[i];
            file << "  {\"name\": \"" << one.name << "\", \"goal\": \"" << one.goal << "\", \"figure\": " << one.value
                 << ", \"unit\": \"" << one.unit << "\", \"ratio\": " << one.ratio << '}'
                 << (i + 1 < m_figures.size() ? ",\n" : "\n");
        }
        file << "]\n";
        file.close();
        Require(!file.fail(), "the JSON file");
    }

private:
    std::vector<SFigure> m_figures;
};

// The options of a command line, all of the form --name VALUE. `values` holds the names that there are, with what they
// are when not given.
inline void Options_Read(int argumentCount, char** arguments, std::map<std::string, std::string>& values)
{
    for (int i = 1; i < argumentCount; i += 2)
    {
        const auto found = values.find(arguments[i]);
        if (found == values.end() || i + 1 == argumentCount)
        {
            std::string usage = "usage:";
            for (const auto& [name, value] : values)
            {
                usage += " [" + name + ' ' + (value.empty() ? "VALUE" : value) + ']';
            }
            throw std::runtime_error(usage);
        }
        found->second = arguments[i + 1];
    }
}
