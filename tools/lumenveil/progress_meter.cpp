#include "tools/lumenveil/progress_meter.h"

#include <unistd.h>

#include <cstdio>

#include "tools/lumenveil/quiet_stderr.h"

ProgressMeter::ProgressMeter(long count, bool quiet)
    : frames(count), shown(!quiet && count > 1 && isatty(STDERR_FILENO)), start(std::chrono::steady_clock::now())
{
}

void ProgressMeter::FrameDone(long number, long done)
{
    if (!shown)
        return;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const double rate = seconds > 0 ? done / seconds : 0.0;
    const long left = rate > 0 ? static_cast<long>((frames - done) / rate + 0.5) : 0;
    const StderrLine line;
    std::fprintf(stderr, "\rframe %ld (%ld of %ld)  %.2f fps  %ld:%02ld left ", number, done, frames, rate, left / 60,
                 left % 60);
    std::fflush(stderr);
    drawn = true;
}

void ProgressMeter::Finish()
{
    if (drawn) {
        const StderrLine line;
        std::fputc('\n', stderr);
    }
    drawn = false;
}
