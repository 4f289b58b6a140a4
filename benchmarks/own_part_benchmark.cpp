// own_part_benchmark OFFERS CALLS: update checks without a network, in a host that has a window, and what
// each must do anyway.
#include "support/bench_product.h"
#include "support/instant_curl.h"
#include "support/measure.h"
#include "support/required_calls.h"

#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    CreateWindowW(
        L"STATIC", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 400, 300, nullptr, nullptr, nullptr,
        nullptr);
    BenchProduct product;
    instant_curl::OfferProducts(std::atoi(argv[1]));
    for (int calls = std::atoi(argv[2]); calls > 0; --calls) {
        product.context.resultCode = 0;
        Print("call", Duration([&] { CheckForUpdates(&product.context); }));
        if (product.context.resultCode != PRODUCT_SERVICES_SUCCESS) {
            return 1;
        }
        Print("record", Duration([&] { required_calls::ReadRecord(product); }));
        Print("cursor", Duration([] {
                  required_calls::SetWaitCursor();
                  required_calls::SetWaitCursor();
              }));
        Print("parses", Duration([] { required_calls::ParseTwice(instant_curl::OffersReply()); }));
    }
    return 0;
}
