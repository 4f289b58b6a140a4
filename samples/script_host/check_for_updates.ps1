# A host that cannot load ProductServicesGuard.dll: a script for Windows PowerShell 5.1 or later, which runs
# ProductServicesTool and parses its JSON. No test runs this script, because it needs Windows.
#
#     powershell -File check_for_updates.ps1 -Product NAME -Version TEXT -ApiKey KEY -TrustedHosts LIST
param(
    [Parameter(Mandatory)] [string] $Product,
    [Parameter(Mandatory)] [string] $Version,
    [Parameter(Mandatory)] [string] $ApiKey,
    # The hosts to which a URL may lead, such as "example.com;*.example.com".
    [Parameter(Mandatory)] [string] $TrustedHosts,
    [string] $Tool = (Join-Path $PSScriptRoot 'ProductServicesTool.exe')
)

[Console]::OutputEncoding = [Text.Encoding]::UTF8
$output = & $Tool check --product $Product --version $Version --api-key $ApiKey `
    --trusted-hosts $TrustedHosts --time-limit 15 --json
# 0: the service has answered. 1: it has not. 2: invalid usage, which the tool has reported on stderr.
if ($LASTEXITCODE -notin 0, 1) {
    throw "$Tool exited with status $LASTEXITCODE"
}

$result = $output | ConvertFrom-Json
switch ($result.outcome) {
    # The URL is https and on a trusted host, so it may be opened: Start-Process $result.text
    'NEWER_RELEASE' { "A newer release is at $($result.text)" }
    'UP_TO_DATE' { 'Up to date' }
    { $_ -in 'UNTRUSTED_CERTIFICATE', 'UNTRUSTED_ADDRESS' } {
        "Not secure, ask your administrator: $($result.text)"
    }
    { $_ -in 'UNREACHABLE', 'TIMED_OUT' } { "No connection, try again later: $($result.text)" }
    default { "Failed with $($result.outcome): $($result.text)" }
}
