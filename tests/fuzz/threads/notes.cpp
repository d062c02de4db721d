// What tools hand from thread to thread: the job queue, and notes of which some are held back.
#include "Notes.h"

#include <atomic>

#include "JobQueue.h"
#include "Threads.h"

int main() {
    std::atomic<int> written{0};
    wrb::Notes notes([&written](const std::wstring&) { ++written; }, 5000);
    wrb::JobQueue queue;
    queue.Start(2);
    OnThreads([&](int, int round) {
        if (round % 2 == 0) {
            notes.Write(L"note");
        } else {
            queue.Push([&notes] { notes.Write(L"from a job"); });
        }
    });
    queue.Finish();
    return written == 5000 ? 0 : 1;
}
