#pragma once

#include <product_services/product_services.hpp>

#include <string>

namespace doctor {

/// What is examined: a product on this machine, and where its library looks.
struct Patient
{
    product_services::Product product;
    /// The address of the maker's service, without a slash at its end.
    std::wstring serviceAddress;
    /// The registry path below which installers write the records of products.
    std::wstring recordPath;
};

enum class Output
{
    Lines,
    Json
};

/// Examines the machine and prints what it finds, without a key in full. Changes nothing. Says whether all is
/// well; end the process then without waiting for threads: what has exceeded its time may still run.
bool Examine(const Patient& patient, Output output);

} // namespace doctor
