// Crashes, so that a test sees that a crash under Wine is a failure.
int main()
{
    volatile int* nowhere = nullptr;
    return *nowhere;
}
