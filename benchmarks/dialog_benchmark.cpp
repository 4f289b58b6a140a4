// dialog_benchmark OFFERS ROUNDS: the upgrade center from the reply's arrival until it is painted, and a
// plain Win32 dialog that is given the same rows.
#include "bare_dialog.h"
#include "support/bench_product.h"
#include "support/instant_curl.h"
#include "support/measure.h"
#include "support/painted_list.h"

#include <cstdlib>

namespace {

std::vector<BareRow> Rows(int offers)
{
    std::vector<BareRow> rows;
    for (int i = 0; i < offers; ++i) {
        const std::string name = instant_curl::OfferName(i);
        rows.push_back({std::wstring(name.begin(), name.end()), L"2026.2"});
    }
    return rows;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    const int offers = std::atoi(argv[1]);
    const std::vector<BareRow> rows = Rows(offers);
    BenchProduct product;
    instant_curl::OfferProducts(offers);
    painted_list::Watch();
    for (int rounds = std::atoi(argv[2]); rounds > 0; --rounds) {
        product.context.resultCode = 0;
        Upgrade(&product.context);
        if (product.context.resultCode != PRODUCT_SERVICES_USER_QUIT) {
            return 1;
        }
        Print("library", painted_list::LastPainted() - instant_curl::LastArrival());

        const double start = Now();
        ShowBareDialog(rows);
        Print("bare", painted_list::LastPainted() - start);
    }
    return 0;
}
