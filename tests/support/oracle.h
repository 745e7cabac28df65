// oracle.h - GNU Fortran as a reference: a Fortran program compiled at test
// time (unoptimized, so that intrinsics reach its runtime library) reads the
// given input and its output is returned.  Empty when gfortran is missing
// (the caller skips).
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace testutil {

inline bool have_gfortran() { return std::system("gfortran --version > /dev/null 2>&1") == 0; }

inline std::string run_fortran(const std::string& source, const std::string& input) {
    const std::string dir = ::testing::TempDir() + "oracle_" + std::to_string(getpid());
    if (std::system(("mkdir -p " + dir).c_str()) != 0) return {};
    std::ofstream(dir + "/p.f90") << source;
    std::ofstream(dir + "/in.txt") << input;
    std::string out;
    if (std::system(("gfortran -O0 -o " + dir + "/p " + dir + "/p.f90 && " + dir + "/p < " + dir + "/in.txt > " +
                     dir + "/out.txt").c_str()) == 0) {
        std::stringstream s;
        s << std::ifstream(dir + "/out.txt").rdbuf();
        out = s.str();
    }
    std::system(("rm -rf " + dir).c_str());
    return out;
}

}  // namespace testutil
