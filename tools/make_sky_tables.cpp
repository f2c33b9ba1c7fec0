// make_sky_tables: turn the three sky catalogue files of data/skydata into
// the constant tables of skymap/sky_catalogue.h, as C++ source. The build
// runs it whenever a file changes; the program itself never reads them.
//
//   make_sky_tables DATA_DIR OUTPUT.cpp
//
// Numbers are copied as the files write them, so the tables hold exactly the
// published digits. A row that is malformed, out of order or in the wrong
// group stops the build with the file and line.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{

const int group_count = 88;

struct Reader
{
    FILE *file;
    std::string path;
    int line;
};

std::vector<std::string> abbreviations; // from the constellation file, in order

[[noreturn]] void fail(const Reader &r, const char *why)
{
    fprintf(stderr, "make_sky_tables: %s:%d: %s\n", r.path.c_str(), r.line, why);
    exit(1);
}

// The next data line as fields; false at the end of the file.
bool read_row(Reader &r, std::vector<std::string> &fields, size_t want)
{
    char text[512];
    if (!fgets(text, sizeof text, r.file))
    {
        return false;
    }
    r.line++;
    size_t length = strcspn(text, "\r\n");
    if (text[length] == 0 && !feof(r.file))
    {
        fail(r, "line too long");
    }
    text[length] = 0;
    fields.clear();
    std::string field;
    for (const char *p = text;; p++)
    {
        if (*p == ',' || *p == 0)
        {
            fields.push_back(field);
            field.clear();
            if (*p == 0)
            {
                break;
            }
            continue;
        }
        // Names go into string literals; nothing in them may need escaping.
        if (*p == '"' || *p == '\\' || (unsigned char)*p < ' ')
        {
            fail(r, "a field holds a quote, a backslash or a control character");
        }
        field += *p;
    }
    if (fields.size() != want)
    {
        fail(r, "wrong number of fields");
    }
    return true;
}

Reader open_file(const std::string &dir, const char *name, const char *header)
{
    Reader r = {fopen((dir + "/" + name).c_str(), "r"), dir + "/" + name, 0};
    if (!r.file)
    {
        fprintf(stderr, "make_sky_tables: cannot read %s\n", r.path.c_str());
        exit(1);
    }
    char text[256];
    if (!fgets(text, sizeof text, r.file) || strncmp(text, header, strlen(header)) != 0)
    {
        fail(r, "not the expected header");
    }
    r.line = 1;
    return r;
}

// A number as the file writes it, checked to be one whole number in range.
const char *number(const Reader &r, const std::string &text, double low, double high)
{
    char *end;
    double value = strtod(text.c_str(), &end);
    if (text.empty() || *end != 0 || value < low || value > high)
    {
        fail(r, "a number is malformed or out of range");
    }
    return text.c_str();
}

int group_of(const Reader &r, const std::string &index, const std::string &abbreviation)
{
    int group = atoi(number(r, index, 0, group_count - 1));
    if (abbreviation.compare(0, 3, abbreviations[group]) != 0 || abbreviation.size() > 7)
    {
        fail(r, "the abbreviation does not match the group");
    }
    return group;
}

void write_constellations(const std::string &dir, FILE *out)
{
    Reader r = open_file(dir, "constellations.csv", "abbreviation,name,ra_hours,dec_deg,area_sq_deg,size_rank");
    std::vector<std::string> f;
    fprintf(out, "const ConstellationInfo constellation_table[CONSTELLATION_COUNT] = {\n");
    while (read_row(r, f, 6))
    {
        if (f[0].size() != 3 || f[1].size() > 34 || abbreviations.size() == group_count)
        {
            fail(r, "bad abbreviation or name, or more than 88 rows");
        }
        abbreviations.push_back(f[0]);
        fprintf(out, "    {\"%s\", \"%s\", %s, %s, %s, %s},\n", f[0].c_str(), f[1].c_str(), number(r, f[2], 0, 24),
                number(r, f[3], -90, 90), number(r, f[4], 0, 41253), number(r, f[5], 1, group_count));
    }
    if (abbreviations.size() != group_count)
    {
        fail(r, "fewer than 88 constellations");
    }
    fprintf(out, "};\n\n");
    fclose(r.file);
}

// Groups come in table order, each whole; a group's rows are written as one
// array and the group record after it. Every group must have rows.
struct GroupWriter
{
    FILE *out;
    const char *kind; // "boundary" or "deep_sky"
    const char *row_type;
    const char *group_type;
    int current = -1;
    int count = 0;
    std::string abbreviation;

    void row(const Reader &r, int group, const std::string &name)
    {
        if (group != current)
        {
            if (group != current + 1)
            {
                fail(r, "groups out of order or one missing");
            }
            close();
            current = group;
            abbreviation = name;
            fprintf(out, "static const %s %s_rows_%d[] = {\n", row_type, kind, group);
        }
        count++;
    }
    void close()
    {
        if (current < 0)
        {
            return;
        }
        fprintf(out, "};\nstatic const %s %s_group_%d = {\"%s\", %d, %s_rows_%d};\n\n", group_type, kind, current,
                abbreviation.c_str(), count, kind, current);
        count = 0;
    }
    void finish(const Reader &r)
    {
        close();
        if (current != group_count - 1)
        {
            fail(r, "not every constellation has rows");
        }
        fprintf(out, "const %s *const %s_table[CONSTELLATION_COUNT] = {\n", group_type, kind);
        for (int g = 0; g < group_count; g++)
        {
            fprintf(out, "    &%s_group_%d,\n", kind, g);
        }
        fprintf(out, "};\n\n");
    }
};

void write_boundaries(const std::string &dir, FILE *out)
{
    Reader r = open_file(dir, "boundaries.csv", "group_index,abbreviation,point_index,ra_hours,dec_deg");
    GroupWriter w = {out, "boundary", "BoundaryPoint", "BoundaryGroup"};
    std::vector<std::string> f;
    while (read_row(r, f, 5))
    {
        w.row(r, group_of(r, f[0], f[1]), f[1]);
        if (atoi(number(r, f[2], 0, 999)) != w.count - 1)
        {
            fail(r, "points out of order");
        }
        fprintf(out, "    {%s, %s},\n", number(r, f[3], 0, 24), number(r, f[4], -90, 90));
    }
    w.finish(r);
    fclose(r.file);
}

void write_deep_sky(const std::string &dir, FILE *out)
{
    Reader r = open_file(dir, "deepsky.csv",
                         "group_index,abbreviation,number,type,ra_hours,dec_deg,dimension_arcmin,magnitude");
    GroupWriter w = {out, "deep_sky", "DeepSkyObject", "DeepSkyGroup"};
    std::vector<std::string> f;
    while (read_row(r, f, 8))
    {
        w.row(r, group_of(r, f[0], f[1]), f[1]);
        fprintf(out, "    {%s, %s, %s, %s, %s, %s},\n", number(r, f[2], 1, 7840), number(r, f[3], 0, 12),
                number(r, f[4], 0, 24), number(r, f[5], -90, 90), number(r, f[6], 0, 600), number(r, f[7], 0, 30));
    }
    w.finish(r);
    fclose(r.file);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
    {
        fprintf(stderr, "usage: make_sky_tables DATA_DIR OUTPUT.cpp\n");
        return 2;
    }
    // Written beside and renamed, so a failed run never leaves half a table
    // that the next build would take as up to date.
    std::string temp = std::string(argv[2]) + ".part";
    FILE *out = fopen(temp.c_str(), "w");
    if (!out)
    {
        fprintf(stderr, "make_sky_tables: cannot write %s\n", temp.c_str());
        return 1;
    }
    fprintf(out, "// Made by make_sky_tables from data/skydata; edit the files there, not this.\n"
                 "#include \"skymap/sky_catalogue.h\"\n\n");
    write_constellations(argv[1], out);
    write_boundaries(argv[1], out);
    write_deep_sky(argv[1], out);
    if (fclose(out) != 0 || rename(temp.c_str(), argv[2]) != 0)
    {
        fprintf(stderr, "make_sky_tables: cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
