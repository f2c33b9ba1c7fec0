// The corpus replay: feed every file of the folders or files named on the
// command line to the target once, as libFuzzer would, and say how many ran.
// Built with the plain compiler, so the ordinary suite replays every stored
// input, the reproducers of old crashes among them.
#include "fuzz_support.h"

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <string>
#include <sys/stat.h>
#include <vector>

static int replay_file(const std::string &path)
{
    FILE *f = fopen(path.c_str(), "rb");
    if (!f)
    {
        perror(path.c_str());
        return 1;
    }
    std::vector<uint8_t> bytes;
    uint8_t chunk[4096];
    size_t n;
    while ((n = fread(chunk, 1, sizeof chunk, f)) > 0)
    {
        bytes.insert(bytes.end(), chunk, chunk + n);
    }
    fclose(f);
    // An empty vector has no storage; libFuzzer passes a valid pointer even then.
    uint8_t none = 0;
    LLVMFuzzerTestOneInput(bytes.empty() ? &none : bytes.data(), bytes.size());
    return 0;
}

static void list_files(const std::string &path, std::vector<std::string> *files)
{
    struct stat st;
    if (stat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
    {
        files->push_back(path);
        return;
    }
    DIR *dir = opendir(path.c_str());
    while (dirent *entry = dir ? readdir(dir) : nullptr)
    {
        if (entry->d_name[0] != '.')
        {
            list_files(path + "/" + entry->d_name, files);
        }
    }
    if (dir)
    {
        closedir(dir);
    }
}

int main(int argc, char **argv)
{
    std::vector<std::string> files;
    for (int i = 1; i < argc; i++)
    {
        list_files(argv[i], &files);
    }
    std::sort(files.begin(), files.end());
    int failed = 0;
    for (const std::string &file : files)
    {
        fprintf(stderr, "%s\n", file.c_str());
        failed |= replay_file(file);
    }
    fprintf(stderr, "replayed %zu inputs\n", files.size());
    return files.empty() || failed ? 1 : 0;
}
