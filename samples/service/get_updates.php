<?php
// Answers the update queries of applications. To put the service up:
//
// 1. Write your products into catalogue.php: product key -> installed version -> offers. An offer with a number "percent"
//    is shown to so many of a hundred computers only; a text in place of a key's versions refuses the key for that
//    reason. product_service.py --catalogue catalogue.php tries it out.
// 2. Copy check.php, get_updates.php and catalogue.php into one folder of a web space with PHP 8 and HTTPS, below the URL
//    that is built into the library.
// 3. Try it with curl and with the doctor of ProductServicesTool. If the doctor says that a reply arrived in pieces,
//    enlarge the buffers of the web server, or offer less.
//
// For maintenance, create a file named "maintenance" beside this one: users are then told nothing at all.
declare(strict_types=1);

// A query has some hundred bytes.
const MAX_LENGTH = 8192;
// The values are not escaped, so each reaches to the first "&name=" of the next field.
const QUERY = '/^api_key=(.*?)&key=(.*?)&hardware_id=(.*?)&version=(.*?)&up=([01])$/sD';
const MAINTENANCE = ['status' => 1];

// The length keeps the web server from sending the reply in chunks.
function send(string $body, int $status = 200): never
{
    http_response_code($status);
    header('Content-Type: application/json');
    header('Content-Length: ' . strlen($body));
    echo $body;
    exit;
}

function send_document(array $document, int $status = 200): never
{
    send(json_encode($document, JSON_UNESCAPED_SLASHES | JSON_UNESCAPED_UNICODE | JSON_THROW_ON_ERROR), $status);
}

function refuse(string $error, int $status = 200): never
{
    send_document(['status' => 0, 'error' => $error], $status);
}

// Null if it is missing or broken.
function read_catalogue(): ?array
{
    $text = (string) @file_get_contents(__DIR__ . '/catalogue.php');
    return json_decode(substr($text, (int) strpos($text, "\n")), true);
}

// Whether a computer, of which a query has the identifier, is among so many of a hundred.
function is_among(string $computer, int $percent): bool
{
    $number = preg_match('/^[0-9a-f]{2}/', $computer, $digits) ? hexdec($digits[0]) : 255;
    return $number < ceil($percent * 256 / 100);
}

function answer(string $body): never
{
    if (is_file(__DIR__ . '/maintenance')) {
        send_document(MAINTENANCE);
    }
    if (!preg_match(QUERY, $body, $query)) {
        refuse('malformed query', 400);
    }
    [, , $key, $computer, $version] = $query;
    $catalogue = read_catalogue() ?? send_document(MAINTENANCE);
    $versions = $catalogue[$key] ?? 'unknown product key';
    if (is_string($versions)) {
        refuse($versions);
    }
    $offers = [];
    foreach ($versions[$version] ?? [] as $offer) {
        if (is_among($computer, $offer['percent'] ?? 100)) {
            unset($offer['percent']);
            $offers[] = $offer;
        }
    }
    $offers ? send_document($offers) : send(''); // to say that nothing is newer, an empty body and not []
}

ini_set('display_errors', '0');
set_exception_handler(fn () => send_document(MAINTENANCE));
if ($_SERVER['REQUEST_METHOD'] !== 'POST') {
    header('Allow: POST');
    refuse('use POST', 405);
}
// As many bytes as are left tell a longer query from a whole one.
$body = (string) file_get_contents('php://input', false, null, 0, MAX_LENGTH + 1);
strlen($body) > MAX_LENGTH ? refuse('malformed query', 413) : answer($body);
