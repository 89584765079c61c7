#include <platform/threads.h>
#include <pthread.h>
#include <runtime/mem_AllocationOperators.h>
#include <semaphore.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <new>

namespace platform {
namespace {

class Semaphore {
public:
    Semaphore() { sem_init(&m_semaphore, 0, 0); }
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    ~Semaphore() { sem_destroy(&m_semaphore); }
    void Raise() { sem_post(&m_semaphore); }
    bool Take() {
        int result = sem_wait(&m_semaphore);
        while (result != 0 && errno == EINTR) result = sem_wait(&m_semaphore);
        return result == 0;
    }

private:
    sem_t m_semaphore;
};

class Waitable : public mem_AllocationOperators {
public:
    virtual bool Wait() = 0;
    virtual void Close() = 0;

protected:
    ~Waitable() = default;
};

template <class T, class... Arguments>
T* New(Arguments... arguments) {
    try {
        return new T(arguments...);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

class Event final : public Waitable {
public:
    void Set() { m_set.Raise(); }
    bool Wait() override { return m_set.Take(); }
    void Close() override { delete this; }

private:
    Semaphore m_set;
};

struct Node : mem_AllocationOperatorsTiny {
    Message message;
    Node* next;
};

class Thread;
constinit std::mutex g_queuesLock;
constinit Thread* g_withQueue = nullptr;
constinit thread_local Thread* t_current = nullptr;

// Owned by its handle and by the running thread; the last of the two deletes it.
class Thread final : public Waitable {
public:
    Thread(ThreadFunction run, void* argument) : m_run(run), m_argument(argument) {}

    bool Start() {
        if (pthread_create(&m_thread, nullptr, &Main, this) != 0) return false;
        m_running.Take();
        return true;
    }
    std::uint32_t Id() const { return m_id; }
    std::uint32_t ExitCode() const { return m_exitCode; }

    bool Wait() override {
        if (!m_joined) m_joined = pthread_join(m_thread, nullptr) == 0;
        return m_joined;
    }
    void Close() override {
        if (!m_joined) pthread_detach(m_thread);
        Release();
    }

    void MakeQueue() {
        const std::lock_guard lock(g_queuesLock);
        if (m_hasQueue) return;
        m_hasQueue = true;
        m_nextWithQueue = g_withQueue;
        g_withQueue = this;
    }

    bool NextMessage(Message& message) {
        std::unique_lock lock(g_queuesLock);
        m_posted.wait(lock, [this] { return m_first != nullptr; });
        Node* const node = TakeFirst();
        message = node->message;
        if (node == &m_spare) return message.number != kQuitMessage;
        lock.unlock();
        delete node;
        return message.number != kQuitMessage;
    }

    static Posted Post(std::uint32_t id, const Message& message) {
        Node* node = New<Node>();
        Posted result = Posted::kNoQueue;
        {
            const std::lock_guard lock(g_queuesLock);
            Thread* to = g_withQueue;
            while (to && to->m_id != id) to = to->m_nextWithQueue;
            if (to) {
                result = to->Append(node ? node : to->Spare(), message);
                node = nullptr;
            }
        }
        delete node;
        return result;
    }

private:
    static void* Main(void* self) noexcept {
        Thread* const thread = t_current = static_cast<Thread*>(self);
        thread->m_id = static_cast<std::uint32_t>(gettid());
        thread->m_running.Raise();
        thread->m_exitCode = thread->m_run(thread->m_argument);
        thread->EndQueue();
        thread->Release();
        return nullptr;
    }

    // What follows works on the queue, under its lock.

    Posted Append(Node* node, const Message& message) {
        if (!node) return Posted::kFull;
        node->message = message;
        node->next = nullptr;
        (m_last ? m_last->next : m_first) = node;
        m_last = node;
        m_posted.notify_one();
        return Posted::kYes;
    }
    Node* TakeFirst() {
        Node* const node = m_first;
        m_first = node->next;
        if (!m_first) m_last = nullptr;
        if (node == &m_spare) m_spareInUse = false;
        return node;
    }
    Node* Spare() {
        if (m_spareInUse) return nullptr;
        m_spareInUse = true;
        return &m_spare;
    }
    void EndQueue() {
        const std::lock_guard lock(g_queuesLock);
        if (!m_hasQueue) return;
        Thread** at = &g_withQueue;
        while (*at != this) at = &(*at)->m_nextWithQueue;
        *at = m_nextWithQueue;
        while (m_first) {
            Node* const node = TakeFirst();
            if (node != &m_spare) delete node;
        }
    }

    void Release() {
        if (m_owners.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }

    const ThreadFunction m_run;
    void* const m_argument;
    pthread_t m_thread{};
    bool m_joined = false;
    std::atomic<int> m_owners{2};
    Semaphore m_running;  // from then on m_id is set
    std::uint32_t m_id = 0;
    std::uint32_t m_exitCode = 0;

    bool m_hasQueue = false;
    Thread* m_nextWithQueue = nullptr;
    std::condition_variable m_posted;
    Node* m_first = nullptr;
    Node* m_last = nullptr;
    Node m_spare{};  // for one message while memory is exhausted
    bool m_spareInUse = false;
};

}  // namespace

Handle NewEvent() { return static_cast<Waitable*>(New<Event>()); }

void Signal(Handle event) { static_cast<Event*>(static_cast<Waitable*>(event))->Set(); }

Handle StartThread(ThreadFunction run, void* argument, std::uint32_t& id) {
    Thread* const thread = New<Thread>(run, argument);
    if (!thread) return nullptr;
    if (!thread->Start()) {
        delete thread;
        return nullptr;
    }
    id = thread->Id();
    return static_cast<Waitable*>(thread);
}

void RaisePriority(Handle) {}

bool Wait(Handle handle) { return static_cast<Waitable*>(handle)->Wait(); }

std::uint32_t ExitCode(Handle thread) {
    return static_cast<Thread*>(static_cast<Waitable*>(thread))->ExitCode();
}

void Close(Handle handle) { static_cast<Waitable*>(handle)->Close(); }

void MakeQueue() { t_current->MakeQueue(); }

bool NextMessage(Message& message) { return t_current->NextMessage(message); }

Posted Post(std::uint32_t threadId, const Message& message) {
    return Thread::Post(threadId, message);
}

}  // namespace platform
