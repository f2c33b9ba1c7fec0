// morvane-astro as an operator's script runs it: rows in, CSV out, and a
// one-line error with a non-zero exit for bad input.
#include <QProcess>
#include <QStringList>
#include <cstdlib>
#include <gtest/gtest.h>

namespace
{

struct ToolRun
{
    int exit_code;
    QString out, err;
};

// A run that does not start, crashes or hangs gives exit code -1 (a hung
// one is killed when the QProcess goes).
ToolRun run_tool(const QStringList &arguments, const QByteArray &input)
{
    QProcess p;
    p.start(QString::fromLocal8Bit(getenv("MORVANE_BIN")) + "/morvane-astro", arguments);
    p.waitForStarted(5000);
    p.write(input);
    p.closeWriteChannel();
    p.waitForFinished(10000);
    bool normal = p.state() == QProcess::NotRunning && p.exitStatus() == QProcess::NormalExit;
    return {normal ? p.exitCode() : -1, p.readAllStandardOutput(), p.readAllStandardError()};
}

const char header[] = "computed,above_horizon,az_tracking_enable,el_tracking_enable,az,el,doppler_hz,sky_temp,"
                      "spatial_offset,degradation,path_loss,hour_angle,ra,dec,distance,phase,sub_lat,sub_lng,rise,"
                      "set,transit,rst_status";

} // namespace

// The Moon at the 2024 eclipse's greatest point, against the figures worked
// by hand from the published formulas; full precision survives the text.
TEST(AstroTool, CsvRowsCarryEveryFieldAtFullPrecision)
{
    ToolRun run = run_tool({"--csv", "--source", "0"},
                           "2024-04-08 18:17:16,25.29,-104.13,1296\n\n2026-01-01 00:00:30, 52.0, 5.0, 1296\r\n");
    ASSERT_EQ(run.exit_code, 0) << run.err.toStdString();
    QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], header);
    QStringList first = lines[1].split(',');
    ASSERT_EQ(first.size(), 22);
    EXPECT_EQ(first[0], "1");
    EXPECT_NEAR(first[4].toDouble(), 149.369642473464, 1e-9);
    EXPECT_NEAR(first[6].toDouble(), 448.810679733477, 1e-6);
    EXPECT_NE(first[18].toDouble(), 0.0); // the default mask brings rise and set
    QStringList second = lines[2].split(',');
    EXPECT_NEAR(second[6].toDouble(), -1275.92017555009, 1e-6);
}

TEST(AstroTool, MaskChoosesWhatIsComputed)
{
    ToolRun run = run_tool({"--csv", "--source", "6", "--mask", "1"}, "2024-04-08 18:17:16,52,5,1296\n");
    ASSERT_EQ(run.exit_code, 0);
    QStringList row = run.out.split('\n', Qt::SkipEmptyParts).value(1).split(',');
    ASSERT_EQ(row.size(), 22);
    EXPECT_EQ(row[14], "0"); // distance: not asked for
    EXPECT_EQ(row[18], "0"); // rise
}

// --precise with the station's height: the Moon over Colorado, 1600 m up,
// against the Swiss Ephemeris (DE431) figures of the precise Moon's test:
// azimuth 175.2979952, elevation 52.3423426, and a range growing by 0.2606 km
// in 20 s, a shift of -901.2 Hz at 10368 MHz.
TEST(AstroTool, PreciseMoonAtTheStationsHeight)
{
    ToolRun run = run_tool({"--csv", "--source", "0", "--mask", "1", "--precise", "--height", "1600"},
                           "2025-03-14 06:58:00,39.7,-104.9,10368\n");
    ASSERT_EQ(run.exit_code, 0) << run.err.toStdString();
    QStringList row = run.out.split('\n', Qt::SkipEmptyParts).value(1).split(',');
    ASSERT_EQ(row.size(), 22);
    EXPECT_NEAR(row[4].toDouble(), 175.2979952, 0.001);
    EXPECT_NEAR(row[5].toDouble(), 52.3423426, 0.001);
    double range_rate = (396429.826915160 - 396429.566315768) / 20.0;
    EXPECT_NEAR(row[6].toDouble(), -2.0 * range_rate * 10368e6 / 299792.458, 1.0);
    run = run_tool({"--lat", "39.7", "--lon", "-104.9", "--utc", "2025-03-14 06:58:00", "--precise"}, "");
    EXPECT_TRUE(run.out.contains("ELP 2000-82B, station 200 m up")) << run.out.toStdString();
}

// The readable table, with the Moon's rise of the evening before.
TEST(AstroTool, TableShowsTheFigures)
{
    ToolRun run = run_tool({"--lat", "51.5", "--lon", "-0.1", "--utc", "1992-04-12 00:00:00", "--source", "0"}, "");
    ASSERT_EQ(run.exit_code, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains("Path loss") && run.out.contains("Rise             1992-04-11"))
        << run.out.toStdString();
}

// Each bad input ends the run with one line on stderr that says where.
TEST(AstroTool, BadInputGivesOneLineAndAnErrorExit)
{
    struct Bad
    {
        QStringList arguments;
        QByteArray input;
        const char *names;
    } cases[] = {
        {{"--csv", "--source", "0"}, "2024-04-08 18:17:16,52,5,1296\n2024-13-08 18:17:16,52,5,1296\n", "row 2"},
        {{"--csv", "--source", "0"}, "2024-02-30 18:17:16,52,5,1296\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024-04-08 18:17,52,5,1296\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024- 4-08 18:17:16,52,5,1296\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024-04-08 18:17:16,91,5,1296\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024-04-08 18:17:16,-90.5,5,1296\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024-04-08 18:17:16,52,5\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024-04-08 18:17:16,52,5,1296,7\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024-04-08 18:17:16,nan,5,1296\n", "row 1"},
        {{"--csv", "--source", "0"}, "2024-04-08 18:17:16,52,5,0\n", "row 1"},
        {{"--csv", "--source", "0"}, QByteArray(600, '9') + "\n", "row 1"},
        {{"--csv", "--source", "27"}, "", "--source"},
        {{"--csv", "--source", "-1"}, "", "--source"},
        {{"--lat", "52", "--lon", "5", "--utc", "yesterday"}, "", "malformed time"},
        {{"--lat", "95", "--lon", "5"}, "", "latitude"},
        {{"--lat", "52", "--lon", "5", "--precise", "--height", "1e6"}, "", "--height"},
    };
    for (const Bad &c : cases)
    {
        SCOPED_TRACE(c.names);
        ToolRun run = run_tool(c.arguments, c.input);
        EXPECT_GT(run.exit_code, 0);
        EXPECT_EQ(run.err.count('\n'), 1) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(c.names)) << run.err.toStdString();
    }
}
