// The calls of this product, and what its user is told of their outcomes.
#pragma once

#include <product_services/product_services.hpp>

#include <stop_token>
#include <string>

enum class Call
{
    /// A quiet check, which the user has not asked for and which may be made on any thread.
    CheckAtStart,
    Check,
    Upgrade
};

/// Makes a call for this product. A stop request ends its transfers.
product_services::CallResult MakeCall(Call call, const std::stop_token& stopToken = {});

/// What the host tells its user of an outcome.
struct Notice
{
    /// How the text is shown, beside the status line of the window: a message box is for a user who has asked
    /// for the call and does not know its outcome yet.
    enum class Kind
    {
        StatusOnly,
        Information,
        Warning
    };

    Kind kind = Kind::StatusOnly;
    std::wstring text;
    /// A URL to open in the browser if the user agrees; empty: none.
    std::wstring downloadUrl = {};
};

Notice MakeNotice(Call call, const product_services::CallResult& result);

/// The product's name and version, as the user knows them.
std::wstring ProductTitle();
