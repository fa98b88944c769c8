// Makes a folder answer late in a program that this library is preloaded into, as one on a network
// may.
//
//     SLOW_FOLDER  the folder, spelt as the program opens it: for as long as a file of that name
//                  with ".hold" behind it exists, opening the folder waits. One with ".asked" gets
//                  a byte each time.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>

#include <dirent.h>
#include <dlfcn.h>

extern "C" DIR* opendir(const char* name) {
    using namespace std::chrono_literals;
    const char* const slow = std::getenv("SLOW_FOLDER");
    if (slow != nullptr && std::string_view(slow) == name) {
        std::ofstream(std::string(slow) + ".asked", std::ios::app) << '.';
        while (std::filesystem::exists(std::string(slow) + ".hold")) {
            std::this_thread::sleep_for(10ms);
        }
    }
    return reinterpret_cast<decltype(&opendir)>(dlsym(RTLD_NEXT, "opendir"))(name);
}
